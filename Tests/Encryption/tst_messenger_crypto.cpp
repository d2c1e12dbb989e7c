// SPDX-License-Identifier: MIT
#include "Encryption/CryptoSetup.h"
#include "Support/ClientParts.h"
#include "Support/TestMain.h"

#include <QRegularExpression>

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
    static int child(const QStringList &);

private Q_SLOTS:
    void theIdentityKeyIsKept();
    void aStoreThatFails_data();
    void aStoreThatFails();
    void switchedOffThereIsNothing();
    void badKeysLeaveTheSessionAlone();
    void sendingCountsUp();
    void receivingSpendsTheChain();
    void twoClientsNeverMeet();
    void groups();
    void preKeys();
    void uploadsAndLooks_data();
    void uploadsAndLooks();
    void settingUp();
    void noKeyIsEverPrinted();
};

void TestMessengerCrypto::theIdentityKeyIsKept() {
    Engine engine;
    QVERIFY(engine.crypto.isInit);
    const QString fingerprint = engine.crypto.fingerprint;
    QVERIFY(QRegularExpression(u"^([0-9a-f]{4} ){15}[0-9a-f]{4}$"_s).match(fingerprint).hasMatch());
    QCOMPARE(engine.secrets->items.value(identityAccount).size(), 32);
    QCOMPARE(engine.secrets->items.value(identityAccount), engine.crypto.idPriv()->raw().view());
    engine.crypto.loadOrCreate();
    MessengerCrypto restarted(engine.store, true);
    QCOMPARE(restarted.fingerprint.value(), fingerprint);
    QCOMPARE(engine.crypto.fingerprint.value(), fingerprint);
    QCOMPARE(MessengerCrypto::fp(QByteArray(32, '\0')),
             u"6668 7aad f862 bd77 6c8f c18b 8e9f 8e20 0897 1485 6ee2 33b3 902a 591d 0d5f 2925"_s);
}

void TestMessengerCrypto::aStoreThatFails_data() {
    QTest::addColumn<QByteArray>("stored");
    QTest::addColumn<int>("failingCall");
    QTest::addColumn<bool>("keptForNextTime");
    const QByteArray key(32, 'k');
    QTest::newRow("nothing wrong") << key << -1 << true;
    // A key that can't be read is replaced: whoever wrote this rule accepted the loss.
    QTest::newRow("reading fails") << key << 0 << true;
    QTest::newRow("deleting fails") << QByteArray() << 1 << true;
    QTest::newRow("adding fails, after the deletion") << QByteArray() << 2 << false;
    QTest::newRow("a key of 31 bytes") << QByteArray(31, 'k') << -1 << true;
    QTest::newRow("a key of 33 bytes") << QByteArray(33, 'k') << -1 << true;
}

void TestMessengerCrypto::aStoreThatFails() {
    QFETCH(QByteArray, stored);
    QFETCH(int, failingCall);
    QFETCH(bool, keptForNextTime);
    auto secrets = std::make_shared<StoredSecrets>();
    if (!stored.isEmpty())
        secrets->items.insert(identityAccount, stored);
    secrets->failingCall = failingCall;
    FaultySecretStore store(secrets);
    const MessengerCrypto crypto(store, true);
    QVERIFY(crypto.isInit && crypto.idPriv());
    const MessengerCrypto next(store, true);
    QCOMPARE(next.fingerprint.value() == crypto.fingerprint.value(), keptForNextTime);
}

void TestMessengerCrypto::switchedOffThereIsNothing() {
    auto secrets = std::make_shared<StoredSecrets>();
    FaultySecretStore store(secrets);
    MessengerCrypto crypto(store, false);
    crypto.loadOrCreate();
    QVERIFY(!crypto.isInit && !crypto.idPriv() && crypto.fingerprint.value().isEmpty());
    QCOMPARE(secrets->calls, QStringList());
    QVERIFY(!crypto.generateSignedPreKey());
    const QByteArray key = X25519PrivateKey::generate().publicKey();
    QCOMPARE(failureOf([&] { crypto.establishSession(u"3"_s, key, key, true); }), u"invalidKey"_s);
}

void TestMessengerCrypto::badKeysLeaveTheSessionAlone() {
    Engine engine;
    const QString chat = u"3"_s;
    const QByteArray good = X25519PrivateKey::generate().publicKey();
    engine.meet(chat);
    engine.crypto.encrypt(chat, u"first"_s);
    for (int size : {0, 31, 33}) {
        QCOMPARE(failureOf([&] { engine.crypto.establishSession(chat, QByteArray(size, 'k'), good, true); }),
                 u"invalidKey"_s);
        QCOMPARE(failureOf([&] { engine.crypto.establishSession(chat, good, QByteArray(size, 'k'), true); }),
                 u"invalidKey"_s);
    }
    QCOMPARE(failureOf([&] { engine.crypto.establishSession(chat, good, QByteArray(32, '\0'), true); }),
             u"cipher"_s);
    QCOMPARE(engine.crypto.encrypt(chat, u"second"_s).messageNumber, 1);
    QCOMPARE(failureOf([&] { engine.crypto.encrypt(u"4"_s, u"text"_s); }), u"noSession"_s);
    QCOMPARE(failureOf([&] { engine.crypto.decrypt(u"4"_s, {}); }), u"noSession"_s);
}

void TestMessengerCrypto::sendingCountsUp() {
    Engine engine;
    engine.meet(u"3"_s);
    const EncryptedMessage first = engine.crypto.encrypt(u"3"_s, u"текст"_s);
    const EncryptedMessage second = engine.crypto.encrypt(u"3"_s, u"текст"_s);
    QCOMPARE(first.messageNumber, 0);
    QCOMPARE(second.messageNumber, 1);
    QCOMPARE(first.ciphertext.size(), 10);
    QCOMPARE(first.nonce.size(), 12);
    QCOMPARE(first.tag.size(), 16);
    QCOMPARE(first.ephemeralKey, second.ephemeralKey);
    QVERIFY(first.ciphertext != second.ciphertext);
    // A root step puts the count back and takes another key.
    QCOMPARE(failureOf([&] { engine.crypto.decrypt(u"3"_s, first); }), u"cipher"_s);
    const EncryptedMessage third = engine.crypto.encrypt(u"3"_s, u"текст"_s);
    QCOMPARE(third.messageNumber, 0);
    QVERIFY(third.ephemeralKey != first.ephemeralKey);
}

// A message without a sender's key is opened with the chain at hand, one step each, opened or not.
void TestMessengerCrypto::receivingSpendsTheChain() {
    Engine engine;
    engine.meet(u"3"_s);
    const auto bare = [&](const QString &text) {
        EncryptedMessage message = engine.crypto.encrypt(u"3"_s, text);
        message.ephemeralKey.reset();
        return message;
    };
    // The receiving chain begins where the sending one stands then: two steps on from the first message.
    const EncryptedMessage early = bare(u"0"_s);
    const EncryptedMessage late = bare(u"1"_s);
    QCOMPARE(failureOf([&] { engine.crypto.decrypt(u"3"_s, early); }), u"cipher"_s);
    QCOMPARE(failureOf([&] { engine.crypto.decrypt(u"3"_s, late); }), u"cipher"_s);

    Engine other;
    other.meet(u"3"_s);
    EncryptedMessage invalid = other.crypto.encrypt(u"3"_s, u"a"_s);
    // A key that is none is treated as no key: no root step, the count goes on.
    invalid.ephemeralKey = "short";
    QCOMPARE(failureOf([&] { other.crypto.decrypt(u"3"_s, invalid); }), u"cipher"_s);
    QCOMPARE(other.crypto.encrypt(u"3"_s, u"b"_s).messageNumber, 1);
    EncryptedMessage badNonce = invalid;
    badNonce.nonce.chop(1);
    QCOMPARE(failureOf([&] { other.crypto.decrypt(u"3"_s, badNonce); }), u"cipher"_s);
}

void TestMessengerCrypto::twoClientsNeverMeet() {
    Engine anna;
    Engine ben;
    const QByteArray preKey = X25519PrivateKey::generate().publicKey();
    anna.crypto.establishSession(u"3"_s, ben.crypto.idPriv()->publicKey(), preKey, true);
    ben.crypto.establishSession(u"3"_s, anna.crypto.idPriv()->publicKey(), preKey, false);
    const EncryptedMessage message = anna.crypto.encrypt(u"3"_s, u"hi"_s);
    QCOMPARE(failureOf([&] { ben.crypto.decrypt(u"3"_s, message); }), u"cipher"_s);
    QCOMPARE(failureOf([&] { anna.crypto.decrypt(u"3"_s, message); }), u"cipher"_s);
}

void TestMessengerCrypto::groups() {
    Engine engine;
    QCOMPARE(failureOf([&] { engine.crypto.encryptGroup(u"g"_s, u"x"_s); }), u"noSession"_s);
    // Without a session the first member ends it, and the key stays.
    QCOMPARE(failureOf([&] { engine.crypto.createGroupKey(u"g"_s, {u"8"_s}); }), u"noSession"_s);
    QVERIFY(engine.crypto.hasGroupKey(u"g"_s));
    for (const QString &text : {QString(), u"привет 👋"_s}) {
        const EncryptedMessage message = engine.crypto.encryptGroup(u"g"_s, text);
        QVERIFY(!message.messageNumber && !message.ephemeralKey);
        QCOMPARE(engine.crypto.decryptGroup(u"g"_s, message), text);
        QCOMPARE(engine.crypto.decryptGroup(u"g"_s, *EncryptedMessage::fromContent(message.toContent())),
                 text);
    }
    const EncryptedMessage sealed = engine.crypto.encryptGroup(u"g"_s, u"x"_s);
    EncryptedMessage forged = sealed;
    forged.tag[0] = char(forged.tag[0] ^ 1);
    QCOMPARE(failureOf([&] { engine.crypto.decryptGroup(u"g"_s, forged); }), u"cipher"_s);
    engine.meet(u"g"_s);
    const auto keys = engine.crypto.createGroupKey(u"g"_s, {u"8"_s, u"9"_s});
    QCOMPARE(keys.value(u"8"_s).messageNumber, 0);
    QCOMPARE(keys.value(u"9"_s).messageNumber, 1);
    QCOMPARE(keys.value(u"9"_s).ciphertext.size(), 44);
    // Another key: what was sealed before stays shut.
    QCOMPARE(failureOf([&] { engine.crypto.decryptGroup(u"g"_s, sealed); }), u"cipher"_s);
}

void TestMessengerCrypto::preKeys() {
    Engine engine;
    const auto key = engine.crypto.generateSignedPreKey();
    QCOMPARE(key->publicKey, key->privateKey.publicKey());
    QCOMPARE(key->signature,
             primitives::hmacSha256(engine.crypto.idPriv()->raw().view(), {key->publicKey}).view());
    QCOMPARE(engine.crypto.generateOneTimePreKeys(0).size(), 0);
    const QList<QByteArray> keys = engine.crypto.generateOneTimePreKeys(100);
    QCOMPARE(QSet<QByteArray>(keys.begin(), keys.end()).size(), 100);
}

void TestMessengerCrypto::uploadsAndLooks_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("uploads");
    QTest::addColumn<qint64>("remaining");
    QTest::newRow("20 left") << 200 << QByteArray(R"({"pre_keys_remaining":20})") << 0 << qint64(20);
    QTest::newRow("19 left") << 200 << QByteArray(R"({"pre_keys_remaining":19})") << 1 << qint64(97);
    QTest::newRow("none left") << 200 << QByteArray(R"({"pre_keys_remaining":0})") << 1 << qint64(97);
    QTest::newRow("a text for a number")
        << 200 << QByteArray(R"({"pre_keys_remaining":"50"})") << 1 << qint64(97);
    QTest::newRow("refused") << 500 << QByteArray("{}") << 0 << qint64(5);
    QTest::newRow("no JSON") << 200 << QByteArray("<") << 0 << qint64(5);
}

void TestMessengerCrypto::uploadsAndLooks() {
    QFETCH(int, status);
    QFETCH(QByteArray, answer);
    QFETCH(int, uploads);
    QFETCH(qint64, remaining);
    Client client;
    client.crypto.preKeysRemaining = 5;
    client.http.answerFor("/api/messenger/keys/7/count", ScriptedAnswer::of(status, answer));
    client.http.answerFor("/api/messenger/keys/upload", ScriptedAnswer::of(200, R"({"uploaded":97})"));
    QCoro::waitFor(client.manager.replenishIfNeeded(u"7"_s));
    QCOMPARE(client.requestsTo("/api/messenger/keys/upload"), uploads);
    QCOMPARE(client.crypto.preKeysRemaining.value(), remaining);
    QCOMPARE(client.manager.isUploaded.value(), uploads == 1);
    if (uploads == 0)
        return;
    const auto body = json::parseObject(client.http.lastRequest().body);
    QCOMPARE(json::list(*body, u"one_time_pre_keys")->size(), 100);
    const QByteArray signedKey = QByteArray::fromBase64(json::text(*body, u"signed_pre_key")->toLatin1());
    QCOMPARE(client.manager.signedPreKeyPriv->publicKey(), signedKey);
    // Again, with other keys, and the private half follows even when the server refuses.
    client.http.answerFor("/api/messenger/keys/upload", ScriptedAnswer::of(503, "{}"));
    QCoro::waitFor(client.manager.uploadIfNeeded(u"7"_s));
    QVERIFY(client.manager.signedPreKeyPriv->publicKey() != signedKey);
    QVERIFY(client.manager.isUploaded);
}

void TestMessengerCrypto::settingUp() {
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

int TestMessengerCrypto::child(const QStringList &) {
    const OwnFolders folders;
    Client client;
    client.http.answerFor("/api/messenger/keys/upload", ScriptedAnswer::of(500, "{}"));
    QCoro::waitFor(client.manager.replenishIfNeeded(u"7"_s));
    const QByteArray peer = X25519PrivateKey::generate().publicKey();
    client.crypto.establishSession(u"3"_s, peer, peer, true);
    failureOf([&] { client.crypto.decrypt(u"3"_s, client.crypto.encrypt(u"3"_s, u"secret words"_s)); });
    failureOf([&] { client.crypto.establishSession(u"3"_s, peer, QByteArray(32, '\0'), true); });
    const QByteArray key = client.crypto.idPriv()->raw().view().toByteArray();
    // What must not be in the output goes where only the parent looks.
    QFile secrets(qEnvironmentVariable("SECRETS_FILE"));
    if (!secrets.open(QIODevice::WriteOnly))
        return 1;
    secrets.write(key.toHex() + '\n' + key.toBase64() + "\nsecret words\n" +
                  client.manager.signedPreKeyPriv->raw().view().toByteArray().toBase64());
    return 0;
}

void TestMessengerCrypto::noKeyIsEverPrinted() {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"secrets"_s);
    const ChildResult result = runChild({}, {u"SECRETS_FILE="_s + path});
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.output.startsWith(u"🔑 PreKeyManager: only 0 pre-keys left, replenishing...\n"
                                     "⚠️ PreKeyManager: upload failed — "_s));
    QFile secrets(path);
    QVERIFY(secrets.open(QIODevice::ReadOnly));
    for (const QByteArray &secret : secrets.readAll().split('\n')) {
        QVERIFY(secret.size() > 8);
        QVERIFY(!(result.output + result.errors).contains(QString::fromLatin1(secret), Qt::CaseInsensitive));
    }
}

ORVANE_TEST_MAIN(TestMessengerCrypto)
#include "tst_messenger_crypto.moc"
