// SPDX-License-Identifier: MIT
#include "Encryption/CryptoSetup.h"
#include "Support/ClientParts.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QRegularExpression>

#include <cstdio>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

const auto identityAccount = u"com.orvanetalk.messenger.identity"_s;

struct Engine {
    std::shared_ptr<StoredSecrets> secrets = std::make_shared<StoredSecrets>();
    FaultySecretStore store{secrets};
    MessengerCrypto crypto{store, true};

    void meet(const QString &chat) {
        const X25519PrivateKey peer = X25519PrivateKey::generate();
        crypto.establishSession(chat, peer.publicKey(), X25519PrivateKey::generate().publicKey(), true);
    }
};

template <typename F>
QString failureOf(F action) {
    try {
        action();
    } catch (const CryptoError &error) {
        return error.which() == CryptoError::Case::noSession    ? u"noSession"_s
               : error.which() == CryptoError::Case::invalidKey ? u"invalidKey"_s
                                                                : u"?"_s;
    } catch (const CipherError &) {
        return u"cipher"_s;
    }
    return {};
}

struct Client : ClientParts {
    FaultySecretStore store{secrets};
    MessengerCrypto crypto{store, true};
    RestKeyServer server{api};
    PreKeyManager manager{crypto, server};
    int registrations = 0;

    Client() { signIn(); }

    void setUp(bool enabled, int interval, QObject *owner, const QString &home) {
        storage = std::make_unique<EncryptedFileStorage>(home);
        CryptoSetup{.session = session,
                    .crypto = [this]() -> MessengerCrypto & { return crypto; },
                    .preKeys = [this]() -> PreKeyManager & { return manager; },
                    .storage = [this]() -> EncryptedFileStorage & { return *storage; },
                    .registerForRemoteNotifications = [this] { ++registrations; },
                    .replenishInterval = interval}
            .setupCryptoAndPreKeys(enabled, owner);
    }

    std::unique_ptr<EncryptedFileStorage> storage;
};

} // namespace

class TestMessengerCrypto : public QObject {
    Q_OBJECT

public:
    // Everything the layer does, with its output looked at from outside.
    static int child(const QStringList &) {
        const OwnFolders folders;
        Client client;
        client.http.answerFor("/api/messenger/keys/upload", ScriptedAnswer::of(500, "{}"));
        QCoro::waitFor(client.manager.replenishIfNeeded("7"));
        const QByteArray peer = X25519PrivateKey::generate().publicKey();
        client.crypto.establishSession("3", peer, peer, true);
        failureOf([&] { client.crypto.decrypt("3", client.crypto.encrypt("3", "secret words")); });
        failureOf([&] { client.crypto.establishSession("3", peer, QByteArray(32, '\0'), true); });
        const QByteArray key = client.crypto.idPriv()->raw().view().toByteArray();
        // Told last, for the parent to look for in what was said before.
        std::printf("SECRETS\n%s\n%s\nsecret words\n%s", key.toHex().constData(), key.toBase64().constData(),
                    client.manager.signedPreKeyPriv->raw().view().toByteArray().toBase64().constData());
        return 0;
    }

private Q_SLOTS:
    void theIdentityKeyIsKept() {
        Engine engine;
        QVERIFY(engine.crypto.isInit);
        const QString fingerprint = engine.crypto.fingerprint;
        QVERIFY(QRegularExpression("^([0-9a-f]{4} ){15}[0-9a-f]{4}$").match(fingerprint).hasMatch());
        QCOMPARE(engine.secrets->items.value(identityAccount).size(), 32);
        QCOMPARE(engine.secrets->items.value(identityAccount), engine.crypto.idPriv()->raw().view());
        engine.crypto.loadOrCreate();
        MessengerCrypto restarted(engine.store, true);
        QCOMPARE(restarted.fingerprint.value(), fingerprint);
        QCOMPARE(engine.crypto.fingerprint.value(), fingerprint);
        QCOMPARE(MessengerCrypto::fp(QByteArray(32, '\0')),
                 "6668 7aad f862 bd77 6c8f c18b 8e9f 8e20 0897 1485 6ee2 33b3 902a 591d 0d5f 2925");
    }

    void aStoreThatFails() {
        const auto check = [](const char *name, const QByteArray &stored, int failingCall,
                              bool keptForNextTime = true) {
            IN_ROW(name);
            auto secrets = std::make_shared<StoredSecrets>();
            if (!stored.isEmpty())
                secrets->items.insert(identityAccount, stored);
            secrets->failingCall = failingCall;
            FaultySecretStore store(secrets);
            const MessengerCrypto crypto(store, true);
            QVERIFY(crypto.isInit && crypto.idPriv());
            const MessengerCrypto next(store, true);
            QCOMPARE(next.fingerprint.value() == crypto.fingerprint.value(), keptForNextTime);
        };
        const QByteArray key(32, 'k');
        check("nothing wrong", key, -1);
        // A key that can't be read is replaced: whoever wrote this rule accepted the loss.
        check("reading fails", key, 0);
        check("deleting fails", {}, 1);
        check("adding fails, after the deletion", {}, 2, false);
        check("a key of 31 bytes", key.chopped(1), -1);
        check("a key of 33 bytes", key + 'k', -1);
    }

    void switchedOffThereIsNothing() {
        auto secrets = std::make_shared<StoredSecrets>();
        FaultySecretStore store(secrets);
        MessengerCrypto crypto(store, false);
        crypto.loadOrCreate();
        QVERIFY(!crypto.isInit && !crypto.idPriv() && crypto.fingerprint.value().isEmpty());
        QCOMPARE(secrets->calls, QStringList());
        QVERIFY(!crypto.generateSignedPreKey());
        const QByteArray key = X25519PrivateKey::generate().publicKey();
        QCOMPARE(failureOf([&] { crypto.establishSession("3", key, key, true); }), "invalidKey");
    }

    void badKeysLeaveTheSessionAlone() {
        Engine engine;
        const QString chat = u"3"_s;
        const QByteArray good = X25519PrivateKey::generate().publicKey();
        engine.meet(chat);
        engine.crypto.encrypt(chat, "first");
        for (int size : {0, 31, 33}) {
            QCOMPARE(
                failureOf([&] { engine.crypto.establishSession(chat, QByteArray(size, 'k'), good, true); }),
                "invalidKey");
            QCOMPARE(
                failureOf([&] { engine.crypto.establishSession(chat, good, QByteArray(size, 'k'), true); }),
                "invalidKey");
        }
        QCOMPARE(failureOf([&] { engine.crypto.establishSession(chat, good, QByteArray(32, '\0'), true); }),
                 "cipher");
        QCOMPARE(engine.crypto.encrypt(chat, "second").messageNumber, 1);
        QCOMPARE(failureOf([&] { engine.crypto.encrypt("4", "text"); }), "noSession");
        QCOMPARE(failureOf([&] { engine.crypto.decrypt("4", {}); }), "noSession");
    }

    void sendingCountsUp() {
        Engine engine;
        engine.meet("3");
        const EncryptedMessage first = engine.crypto.encrypt("3", "текст");
        const EncryptedMessage second = engine.crypto.encrypt("3", "текст");
        QCOMPARE(first.messageNumber, 0);
        QCOMPARE(second.messageNumber, 1);
        QCOMPARE(first.ciphertext.size(), 10);
        QCOMPARE(first.nonce.size(), 12);
        QCOMPARE(first.tag.size(), 16);
        QCOMPARE(first.ephemeralKey, second.ephemeralKey);
        QVERIFY(first.ciphertext != second.ciphertext);
        // A root step puts the count back and takes another key.
        QCOMPARE(failureOf([&] { engine.crypto.decrypt("3", first); }), "cipher");
        const EncryptedMessage third = engine.crypto.encrypt("3", "текст");
        QCOMPARE(third.messageNumber, 0);
        QVERIFY(third.ephemeralKey != first.ephemeralKey);
    }

    // A message without a sender's key is opened with the chain at hand, one step each, opened or not.
    void receivingSpendsTheChain() {
        Engine engine;
        engine.meet("3");
        const auto bare = [&](const QString &text) {
            EncryptedMessage message = engine.crypto.encrypt("3", text);
            message.ephemeralKey.reset();
            return message;
        };
        // The receiving chain begins where the sending one stands then: two steps on from the first message.
        const EncryptedMessage early = bare("0");
        const EncryptedMessage late = bare("1");
        QCOMPARE(failureOf([&] { engine.crypto.decrypt("3", early); }), "cipher");
        QCOMPARE(failureOf([&] { engine.crypto.decrypt("3", late); }), "cipher");

        Engine other;
        other.meet("3");
        EncryptedMessage invalid = other.crypto.encrypt("3", "a");
        // A key that is none is treated as no key: no root step, the count goes on.
        invalid.ephemeralKey = "short";
        QCOMPARE(failureOf([&] { other.crypto.decrypt("3", invalid); }), "cipher");
        QCOMPARE(other.crypto.encrypt("3", "b").messageNumber, 1);
        EncryptedMessage badNonce = invalid;
        badNonce.nonce.chop(1);
        QCOMPARE(failureOf([&] { other.crypto.decrypt("3", badNonce); }), "cipher");
    }

    void twoClientsNeverMeet() {
        Engine anna;
        Engine ben;
        const QByteArray preKey = X25519PrivateKey::generate().publicKey();
        anna.crypto.establishSession("3", ben.crypto.idPriv()->publicKey(), preKey, true);
        ben.crypto.establishSession("3", anna.crypto.idPriv()->publicKey(), preKey, false);
        const EncryptedMessage message = anna.crypto.encrypt("3", "hi");
        QCOMPARE(failureOf([&] { ben.crypto.decrypt("3", message); }), "cipher");
        QCOMPARE(failureOf([&] { anna.crypto.decrypt("3", message); }), "cipher");
    }

    void groups() {
        Engine engine;
        QCOMPARE(failureOf([&] { engine.crypto.encryptGroup("g", "x"); }), "noSession");
        // Without a session the first member ends it, and the key stays.
        QCOMPARE(failureOf([&] { engine.crypto.createGroupKey("g", {"8"}); }), "noSession");
        QVERIFY(engine.crypto.hasGroupKey("g"));
        for (const QString &text : {QString(), u"привет 👋"_s}) {
            const EncryptedMessage message = engine.crypto.encryptGroup("g", text);
            QVERIFY(!message.messageNumber && !message.ephemeralKey);
            QCOMPARE(engine.crypto.decryptGroup("g", message), text);
            QCOMPARE(engine.crypto.decryptGroup("g", *EncryptedMessage::fromContent(message.toContent())),
                     text);
        }
        const EncryptedMessage sealed = engine.crypto.encryptGroup("g", "x");
        EncryptedMessage forged = sealed;
        forged.tag[0] = char(forged.tag[0] ^ 1);
        QCOMPARE(failureOf([&] { engine.crypto.decryptGroup("g", forged); }), "cipher");
        engine.meet("g");
        const auto keys = engine.crypto.createGroupKey("g", {"8", "9"});
        QCOMPARE(keys.value("8").messageNumber, 0);
        QCOMPARE(keys.value("9").messageNumber, 1);
        QCOMPARE(keys.value("9").ciphertext.size(), 44);
        // Another key: what was sealed before stays shut.
        QCOMPARE(failureOf([&] { engine.crypto.decryptGroup("g", sealed); }), "cipher");
    }

    void preKeys() {
        Engine engine;
        const auto key = engine.crypto.generateSignedPreKey();
        QCOMPARE(key->publicKey, key->privateKey.publicKey());
        QCOMPARE(key->signature,
                 primitives::hmacSha256(engine.crypto.idPriv()->raw().view(), {key->publicKey}).view());
        QCOMPARE(engine.crypto.generateOneTimePreKeys(0).size(), 0);
        const QList<QByteArray> keys = engine.crypto.generateOneTimePreKeys(100);
        QCOMPARE(QSet<QByteArray>(keys.begin(), keys.end()).size(), 100);
    }

    void uploadsAndLooks() {
        const auto check = [](Client &client, int status, const char *answer, int uploads, qint64 remaining) {
            IN_ROW(answer);
            client.crypto.preKeysRemaining = 5;
            client.http.answerFor("/api/messenger/keys/7/count", ScriptedAnswer::of(status, answer));
            client.http.answerFor("/api/messenger/keys/upload",
                                  ScriptedAnswer::of(200, R"({"uploaded":97})"));
            QCoro::waitFor(client.manager.replenishIfNeeded("7"));
            QCOMPARE(client.requestsTo("/api/messenger/keys/upload"), uploads);
            QCOMPARE(client.crypto.preKeysRemaining.value(), remaining);
            QCOMPARE(client.manager.isUploaded.value(), uploads == 1);
        };
        for (const auto &[status, answer, remaining] : {std::tuple(200, R"({"pre_keys_remaining":20})", 20),
                                                        std::tuple(500, "{}", 5), std::tuple(200, "<", 5)})
            check(*std::make_unique<Client>(), status, answer, 0, remaining);
        for (const char *few : {R"({"pre_keys_remaining":19})", R"({"pre_keys_remaining":"50"})"})
            check(*std::make_unique<Client>(), 200, few, 1, 97);
        Client client;
        check(client, 200, R"({"pre_keys_remaining":0})", 1, 97);
        const auto body = json::parseObject(client.http.lastRequest().body);
        QCOMPARE(json::list(*body, u"one_time_pre_keys")->size(), 100);
        const QByteArray signedKey = QByteArray::fromBase64(json::text(*body, u"signed_pre_key")->toLatin1());
        QCOMPARE(client.manager.signedPreKeyPriv->publicKey(), signedKey);
        // Again, with other keys, and the private half follows even when the server refuses.
        client.http.answerFor("/api/messenger/keys/upload", ScriptedAnswer::of(503, "{}"));
        QCoro::waitFor(client.manager.uploadIfNeeded("7"));
        QVERIFY(client.manager.signedPreKeyPriv->publicKey() != signedKey);
        QVERIFY(client.manager.isUploaded);
    }

    void settingUp() {
        const QTemporaryDir home;
        QObject owner;
        {
            Client off;
            off.setUp(false, 1, &owner, home.path());
            Client nobody;
            nobody.session.currentUserId = std::nullopt;
            nobody.setUp(true, 1, &owner, home.path());
            QCOMPARE(owner.children().size(), 0);
            QCOMPARE(off.http.requests().size() + nobody.http.requests().size(), 0);
            QCOMPARE(off.registrations + nobody.registrations, 0);
            QVERIFY(!off.storage->isConfigured());
        }
        Client client;
        client.http.answerFor("/api/messenger/keys/7/count",
                              ScriptedAnswer::of(200, R"({"pre_keys_remaining":100})"));
        client.setUp(true, 1, &owner, home.path());
        QVERIFY(client.storage->isConfigured());
        QCOMPARE(client.registrations, 1);
        QTRY_VERIFY(client.requestsTo("/api/messenger/keys/7/count") >= 3);
        QCOMPARE(client.requestsTo("/api/messenger/keys/upload"), 1);
        qDeleteAll(owner.children());
    }

    void noKeyIsEverPrinted() {
        const ChildResult result = runChild({});
        QCOMPARE(result.exitCode, 0);
        const QString said = result.output.section("SECRETS\n", 0, 0) + result.errors;
        QVERIFY(said.startsWith("🔑 PreKeyManager: only 0 pre-keys left, replenishing...\n"
                                "⚠️ PreKeyManager: upload failed — "));
        const QStringList secrets = result.output.section("SECRETS\n", 1).split('\n');
        QCOMPARE(secrets.size(), 4);
        for (const QString &secret : secrets)
            QVERIFY(secret.size() > 8 && !said.contains(secret, Qt::CaseInsensitive));
    }
};

ORVANE_TEST_MAIN(TestMessengerCrypto)
#include "tst_messenger_crypto.moc"
