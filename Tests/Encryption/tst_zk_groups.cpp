// SPDX-License-Identifier: MIT
#include "Encryption/KeyServers.h"
#include "Encryption/MessengerZkCrypto.h"
#include "HomeServer/Client.h"
#include "Server/MessengerAPI.h"
#include "Support/Await.h"
#include "Support/InRow.h"
#include "Support/SignedInSession.h"

#include <QTest>

using namespace orvane;
using namespace Qt::StringLiterals;
using homeserver::test::Person;
using homeserver::test::Site;

namespace {

const auto identityAccount = u"com.orvanetalk.zk.identity"_s;

QString groupAccount(const QString &chat) {
    return u"com.orvanetalk.zk.group."_s + chat;
}

// Somebody with an engine of their own, known to a real server.
struct Member {
    Member(Site &site, const QString &name)
        : person(site, name)
        , api(site.server().httpUrl().toString(), signedIn.session) {
        signedIn.session.token = person.token;
        restart();
    }

    // The process ends and starts again on the same store.
    void restart() { engine = std::make_unique<MessengerZkCrypto>(store, defaults, server); }
    QString id() const { return QString::number(person.id); }

    Person person;
    SignedInSession signedIn;
    MessengerAPI api;
    RestKeyServer server{api};
    std::shared_ptr<StoredSecrets> secrets = std::make_shared<StoredSecrets>();
    FaultySecretStore store{secrets};
    UserDefaults defaults{signedIn.folder.filePath("zk.ini")};
    std::unique_ptr<MessengerZkCrypto> engine;
};

template <typename T>
QString failureOf(QCoro::Task<T> task) {
    return outcomeOf(std::move(task)).failure;
}

} // namespace

class TestZkGroups : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_site = std::make_unique<Site>();
        m_anna = std::make_unique<Member>(*m_site, "anna");
        m_ben = std::make_unique<Member>(*m_site, "ben");
        m_cleo = std::make_unique<Member>(*m_site, "cleo");
    }

    void threeMembersRead() {
        const QString chat = makeGroup();
        QVERIFY(!chat.isEmpty());
        QCOMPARE(m_anna->engine->titleCache.value(chat), "Тайна");
        const QJsonObject message = posted(*m_anna, chat, "Встреча в 8 👋", *m_ben);
        QCOMPARE(json::text(message, u"content"), "🔒 Encrypted");
        QCOMPARE(read(*m_ben, chat, message), "Встреча в 8 👋");
        // Cleo was away, and reads after a start with nothing but her identity.
        m_cleo->restart();
        QCOMPARE(read(*m_cleo, chat, message), "Встреча в 8 👋");
        QCOMPARE(read(*m_anna, chat, posted(*m_cleo, chat, QString(), *m_anna)), QString());
        // A key that is gone from this machine is fetched and unwrapped again; afterwards no request is made.
        m_ben->secrets->items.remove(groupAccount(chat));
        m_ben->restart();
        QCOMPARE(read(*m_ben, chat, message), "Встреча в 8 👋");
        QVERIFY(m_ben->secrets->items.contains(groupAccount(chat)));
        m_ben->restart();
        QCOMPARE(read(*m_ben, chat, message), "Встреча в 8 👋");
        // Without the flag that says so, nothing is read.
        for (const QJsonValue &flag : {QJsonValue(1), QJsonValue("true"), QJsonValue(false), QJsonValue()}) {
            QJsonObject other = message;
            other.insert("zk_encrypted", flag);
            QCOMPARE(read(*m_ben, chat, other), std::nullopt);
        }
        QJsonObject noPayload = message;
        noPayload.insert("zk_payload", "text");
        QCOMPARE(read(*m_ben, chat, noPayload), std::nullopt);
        QCOMPARE(read(*m_ben, "missing", message), std::nullopt);
        // Somebody else's identity opens nothing.
        m_cleo->secrets->items.clear();
        m_cleo->restart();
        QCOMPARE(read(*m_cleo, chat, message), std::nullopt);
    }

    void aMemberWithoutIdentityEndsTheCreation() {
        QCOMPARE(failureOf(m_anna->engine->createZkGroup("G", {m_ben->id()}, m_anna->id())), "api 404");
        QCOMPARE(m_anna->secrets->items.keys(), QStringList{identityAccount});
        QVERIFY(m_anna->engine->titleCache.isEmpty());
    }

    void theStoreFails() {
        // The calls of one load, in their order, and whether the reading goes well all the same.
        const std::pair<QString, bool> calls[] = {{"copy ", true}, {"remove ", true}, {"add ", false}};
        for (qsizetype call = 0; call < 3; ++call) {
            const auto &[failing, reads] = calls[call];
            IN_ROW(failing.toUtf8());
            init();
            const QString chat = makeGroup();
            const QJsonObject message = posted(*m_anna, chat, "hi", *m_ben);
            m_ben->secrets->failingCall = m_ben->secrets->calls.size() + call;
            QCOMPARE(read(*m_ben, chat, message).has_value(), reads);
            QCOMPARE(m_ben->secrets->calls.value(m_ben->secrets->failingCall), failing + groupAccount(chat));
            // The key stays in memory where it could not be kept, so the second time goes well.
            QCOMPARE(read(*m_ben, chat, message), "hi");
        }
    }

    void anEarlierVersionsEntryMovesOnce() {
        const QString entry = u"ot_zk_gk_5"_s;
        const QByteArray key(32, 'k');
        m_anna->defaults.set(entry, key);
        // A store that can't take it leaves the entry where it is.
        m_anna->secrets->failingCall = m_anna->secrets->calls.size() + 2;
        QCOMPARE(failureOf(m_anna->engine->loadGroupKey("5")), "api 404");
        QVERIFY(m_anna->defaults.data(entry));
        QCOMPARE((*outcomeOf(m_anna->engine->loadGroupKey("5")).value)->view(), QByteArrayView(key));
        QVERIFY(!m_anna->defaults.data(entry));
        QCOMPARE(m_anna->secrets->items.value(groupAccount("5")), key);
    }

    void answersWithoutAChat() {
        struct Answering : ZkServer {
            QJsonObject answer;
            QJsonObject jwk;
            QJsonObject meta;
            QJsonObject wrapped;
            QStringList members;
            QCoro::Task<void> uploadZkIdentity(const QJsonObject &own) override {
                jwk = own;
                co_return;
            }
            QCoro::Task<QJsonObject> fetchZkIdentity(const QString &) override { co_return QJsonObject(jwk); }
            QCoro::Task<QJsonObject> createZkGroup(const QStringList &ids, const QJsonObject &sealed,
                                                   const QJsonObject &keys) override {
                members = ids;
                meta = sealed;
                wrapped = keys;
                co_return QJsonObject(answer);
            }
            QCoro::Task<QJsonObject> fetchZkSenderKey(const QString &) override {
                co_return QJsonObject(wrapped);
            }
        } server;
        MessengerZkCrypto engine(m_anna->store, m_anna->defaults, server);
        for (const QJsonValue &id : {QJsonValue(), QJsonValue(5)}) {
            server.answer = {{"chat_id", id}, {"more", true}};
            const auto made = outcomeOf(engine.createZkGroup("G", {"abc", "7", "7"}, "7"));
            QVERIFY2(made.value, qPrintable(made.failure));
            QCOMPARE(*made.value, server.answer);
            QVERIFY(engine.titleCache.isEmpty());
        }
        QCOMPARE(server.members.size(), 2);
        // The title and the members travel sealed, under the key that each member can unwrap.
        const SymmetricKey key = engine.unwrapSenderKey(*json::object(server.wrapped, u"abc"));
        const auto meta = json::parseObject(zk::decrypt(server.meta, *key).toUtf8());
        QCOMPARE(json::text(*meta, u"title"), "G");
        QCOMPARE(json::integer(*meta, u"epoch"), 1);
        QSet<qint64> ids;
        for (const QJsonObject &member : json::objects(*meta, u"members"))
            ids.insert(*json::integer(member, u"id"));
        QCOMPARE(ids, (QSet<qint64>{0, 7}));
        server.jwk = {{"x", 1}};
        const QString failure = failureOf(engine.wrapSenderKey(std::make_shared<const SecretBytes>(32), "8"));
        QVERIFY2(failure.startsWith(u"ZkCryptoError 1"), qPrintable(failure));
    }

private:
    QString makeGroup() {
        for (Member *member : {m_ben.get(), m_cleo.get()})
            outcomeOf(member->api.uploadZkIdentity(zk::exportPublicJWK(member->engine->publicKey())));
        const auto made =
            outcomeOf(m_anna->engine->createZkGroup("Тайна", {m_ben->id(), m_cleo->id()}, m_anna->id()));
        return made.value ? json::text(*made.value, u"chat_id").value_or(QString()) : QString();
    }

    // What a client posts, and what another one then finds in the history.
    QJsonObject posted(Member &by, const QString &chat, const QString &text, Member &reader) {
        const auto key = outcomeOf(by.engine->loadGroupKey(chat)).value;
        const QJsonObject body{{"user_id", by.person.id},
                               {"content", "🔒 Encrypted"},
                               {"type", "text"},
                               {"zk_payload", zk::encrypt(text, **key)}};
        outcomeOf(by.api.post(u"/api/messenger/chats/%1/messages"_s.arg(chat), body));
        const auto history = outcomeOf(reader.api.fetchMessages(chat, std::nullopt, 1)).value;
        return history && !history->isEmpty() ? history->first() : QJsonObject();
    }

    static std::optional<QString> read(Member &by, const QString &chat, const QJsonObject &raw) {
        return *outcomeOf(by.engine->decryptMessage(chat, raw)).value;
    }

    std::unique_ptr<Site> m_site;
    std::unique_ptr<Member> m_anna;
    std::unique_ptr<Member> m_ben;
    std::unique_ptr<Member> m_cleo;
};

QTEST_GUILESS_MAIN(TestZkGroups)
#include "tst_zk_groups.moc"
