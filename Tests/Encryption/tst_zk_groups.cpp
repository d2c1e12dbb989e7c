// SPDX-License-Identifier: MIT
#include "Encryption/KeyServers.h"
#include "Encryption/MessengerZkCrypto.h"
#include "HomeServer/Client.h"
#include "Server/MessengerAPI.h"
#include "Support/Await.h"
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
    UserDefaults defaults{signedIn.folder.filePath(u"zk.ini"_s)};
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
        m_anna = std::make_unique<Member>(*m_site, u"anna"_s);
        m_ben = std::make_unique<Member>(*m_site, u"ben"_s);
        m_cleo = std::make_unique<Member>(*m_site, u"cleo"_s);
    }
    void threeMembersRead();
    void aMemberWithoutIdentityEndsTheCreation();
    void theStoreFails_data();
    void theStoreFails();
    void anEarlierVersionsEntryMovesOnce();
    void answersWithoutAChat();

private:
    QString makeGroup() {
        for (Member *member : {m_ben.get(), m_cleo.get()})
            outcomeOf(member->api.uploadZkIdentity(zk::exportPublicJWK(member->engine->publicKey())));
        const auto made =
            outcomeOf(m_anna->engine->createZkGroup(u"Тайна"_s, {m_ben->id(), m_cleo->id()}, m_anna->id()));
        return made.value ? json::text(*made.value, u"chat_id").value_or(QString()) : QString();
    }

    // What a client posts, and what another one then finds in the history.
    QJsonObject posted(Member &by, const QString &chat, const QString &text, Member &reader) {
        const auto key = outcomeOf(by.engine->loadGroupKey(chat)).value;
        const QJsonObject body{{u"user_id"_s, by.person.id},
                               {u"content"_s, u"🔒 Encrypted"_s},
                               {u"type"_s, u"text"_s},
                               {u"zk_payload"_s, zk::encrypt(text, **key)}};
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

void TestZkGroups::threeMembersRead() {
    const QString chat = makeGroup();
    QVERIFY(!chat.isEmpty());
    QCOMPARE(m_anna->engine->titleCache.value(chat), u"Тайна"_s);
    const QJsonObject message = posted(*m_anna, chat, u"Встреча в 8 👋"_s, *m_ben);
    QCOMPARE(json::text(message, u"content"), u"🔒 Encrypted"_s);
    QCOMPARE(read(*m_ben, chat, message), u"Встреча в 8 👋"_s);
    // Cleo was away, and reads after a start with nothing but her identity.
    m_cleo->restart();
    QCOMPARE(read(*m_cleo, chat, message), u"Встреча в 8 👋"_s);
    QCOMPARE(read(*m_anna, chat, posted(*m_cleo, chat, QString(), *m_anna)), QString());
    // A key that is gone from this machine is fetched and unwrapped again; afterwards no request is made.
    m_ben->secrets->items.remove(groupAccount(chat));
    m_ben->restart();
    QCOMPARE(read(*m_ben, chat, message), u"Встреча в 8 👋"_s);
    QVERIFY(m_ben->secrets->items.contains(groupAccount(chat)));
    m_ben->restart();
    QCOMPARE(read(*m_ben, chat, message), u"Встреча в 8 👋"_s);
    // Without the flag that says so, nothing is read.
    for (const QJsonValue &flag : {QJsonValue(1), QJsonValue(u"true"_s), QJsonValue(false), QJsonValue()}) {
        QJsonObject other = message;
        other.insert(u"zk_encrypted"_s, flag);
        QCOMPARE(read(*m_ben, chat, other), std::nullopt);
    }
    QJsonObject noPayload = message;
    noPayload.insert(u"zk_payload"_s, u"text"_s);
    QCOMPARE(read(*m_ben, chat, noPayload), std::nullopt);
    QCOMPARE(read(*m_ben, u"missing"_s, message), std::nullopt);
    // Somebody else's identity opens nothing.
    m_cleo->secrets->items.clear();
    m_cleo->restart();
    QCOMPARE(read(*m_cleo, chat, message), std::nullopt);
}

void TestZkGroups::aMemberWithoutIdentityEndsTheCreation() {
    QCOMPARE(failureOf(m_anna->engine->createZkGroup(u"G"_s, {m_ben->id()}, m_anna->id())), u"api 404"_s);
    QCOMPARE(m_anna->secrets->items.keys(), QStringList{identityAccount});
    QVERIFY(m_anna->engine->titleCache.isEmpty());
}

void TestZkGroups::theStoreFails_data() {
    QTest::addColumn<QString>("failing");
    QTest::addColumn<bool>("firstReadFails");
    QTest::newRow("reading") << u"copy "_s << false;
    QTest::newRow("deleting") << u"remove "_s << false;
    // The key stays in memory all the same, so the second time goes well.
    QTest::newRow("adding") << u"add "_s << true;
}

void TestZkGroups::theStoreFails() {
    QFETCH(QString, failing);
    QFETCH(bool, firstReadFails);
    const QString chat = makeGroup();
    const QJsonObject message = posted(*m_anna, chat, u"hi"_s, *m_ben);
    // The calls of one load: copy, remove, add.
    const int offset = failing == u"copy " ? 0 : failing == u"remove " ? 1 : 2;
    m_ben->secrets->failingCall = m_ben->secrets->calls.size() + offset;
    QCOMPARE(read(*m_ben, chat, message).has_value(), !firstReadFails);
    QCOMPARE(m_ben->secrets->calls.value(m_ben->secrets->failingCall), failing + groupAccount(chat));
    QCOMPARE(read(*m_ben, chat, message), u"hi"_s);
}

void TestZkGroups::anEarlierVersionsEntryMovesOnce() {
    const QString entry = u"ot_zk_gk_5"_s;
    const QByteArray key(32, 'k');
    m_anna->defaults.set(entry, key);
    // A store that can't take it leaves the entry where it is.
    m_anna->secrets->failingCall = m_anna->secrets->calls.size() + 2;
    QCOMPARE(failureOf(m_anna->engine->loadGroupKey(u"5"_s)), u"api 404"_s);
    QVERIFY(m_anna->defaults.data(entry));
    QCOMPARE((*outcomeOf(m_anna->engine->loadGroupKey(u"5"_s)).value)->view(), QByteArrayView(key));
    QVERIFY(!m_anna->defaults.data(entry));
    QCOMPARE(m_anna->secrets->items.value(groupAccount(u"5"_s)), key);
}

void TestZkGroups::answersWithoutAChat() {
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
        server.answer = {{u"chat_id"_s, id}, {u"more"_s, true}};
        const auto made = outcomeOf(engine.createZkGroup(u"G"_s, {u"abc"_s, u"7"_s, u"7"_s}, u"7"_s));
        QVERIFY2(made.value, qPrintable(made.failure));
        QCOMPARE(*made.value, server.answer);
        QVERIFY(engine.titleCache.isEmpty());
    }
    QCOMPARE(server.members.size(), 2);
    // The title and the members travel sealed, under the key that each member can unwrap.
    const SymmetricKey key = engine.unwrapSenderKey(*json::object(server.wrapped, u"abc"));
    const auto meta = json::parseObject(zk::decrypt(server.meta, *key).toUtf8());
    QCOMPARE(json::text(*meta, u"title"), u"G"_s);
    QCOMPARE(json::integer(*meta, u"epoch"), 1);
    QSet<qint64> ids;
    for (const QJsonObject &member : json::objects(*meta, u"members"))
        ids.insert(*json::integer(member, u"id"));
    QCOMPARE(ids, (QSet<qint64>{0, 7}));
    server.jwk = {{u"x"_s, 1}};
    const QString failure = failureOf(engine.wrapSenderKey(std::make_shared<const SecretBytes>(32), u"8"_s));
    QVERIFY2(failure.startsWith(u"ZkCryptoError 1"), qPrintable(failure));
}

QTEST_GUILESS_MAIN(TestZkGroups)
#include "tst_zk_groups.moc"
