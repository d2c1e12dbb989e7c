// SPDX-License-Identifier: MIT
#include "HomeServer/Client.h"
#include "Server/ApiError.h"
#include "Server/MessengerAPI.h"
#include "Support/Await.h"
#include "Support/SignedInSession.h"

#include <QFile>
#include <QTest>

using namespace orvane;
using namespace Qt::StringLiterals;
using homeserver::test::Person;
using homeserver::test::Site;

namespace {

// Somebody with this client's session and interface, known to the server under their own name.
struct User {
    User(Site &site, const QString &name)
        : person(site, name)
        , api(site.server().httpUrl().toString(), signedIn.session) {
        signedIn.session.token = person.token;
        signedIn.session.adoptDeviceId(u"device-1"_s);
    }

    QString id() const { return QString::number(person.id); }

    Person person;
    SignedInSession signedIn;
    MessengerAPI api;
};

template <typename T>
T result(QCoro::Task<T> task) {
    auto outcome = outcomeOf(std::move(task));
    if (!outcome.value)
        qFatal("the server did not do it: %s", qPrintable(outcome.failure));
    return *outcome.value;
}
void result(QCoro::Task<void> task) {
    const auto outcome = outcomeOf(std::move(task));
    if (!outcome.value)
        qFatal("the server did not do it: %s", qPrintable(outcome.failure));
}

QString textAt(const QJsonObject &object, const QString &key) {
    return json::text(object, key).value_or(QString());
}
QString textAt(const QJsonObject &object, const QString &outer, const QString &inner) {
    return textAt(json::object(object, outer).value_or(QJsonObject()), inner);
}

} // namespace

// Every operation once against the real server, in the order in which people would come to need them. What
// is compared is what the client reads.
class TestOperationsAtHome : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        m_site = std::make_unique<Site>();
        m_anna = std::make_unique<User>(*m_site, u"anna"_s);
        m_bert = std::make_unique<User>(*m_site, u"bert"_s);
    }
    void devicesAndSync();
    void people();
    void chatsAndMessages();
    void foldersAndSearch();
    void filesAndVoice();
    void preKeys();
    void intelligence();
    void botsAndSkills();
    void otherServersAndTheLocalNetwork();
    void zeroKnowledgeGroups();
    void theAccount();

private:
    MessengerAPI &anna() { return m_anna->api; }
    MessengerAPI &bert() { return m_bert->api; }

    std::unique_ptr<Site> m_site;
    std::unique_ptr<User> m_anna;
    std::unique_ptr<User> m_bert;
    QString m_chat;
    QString m_message;
};

void TestOperationsAtHome::devicesAndSync() {
    result(anna().registerDevice());
    Person::signIn(*m_site, u"anna"_s, u"device-2"_s);
    QCOMPARE(result(anna().listDevices()).size(), 2);
    result(anna().revokeDevice(u"device-2"_s));
    QCOMPARE(result(anna().listDevices()).size(), 1);
    QVERIFY(json::integer(result(anna().pullDeviceSync()), u"cursor"));
    result(anna().registerPushToken(u"0aff"_s, m_anna->id(), u"macos"_s));
}

void TestOperationsAtHome::people() {
    QCOMPARE(result(anna().searchUsers(u"ber"_s, m_anna->id())).size(), 1);
    QCOMPARE(result(anna().sendContactRequest(m_anna->id(), m_bert->id())), u"pending"_s);
    QCOMPARE(result(bert().getContactRequests(m_bert->id())).size(), 1);
    QVERIFY(result(bert().handleContactRequest(m_bert->id(), m_anna->id(), u"accept"_s)) != u"error"_s);
    QVERIFY(!result(anna().fetchContacts(m_anna->id())).isEmpty());
    const QString hash(64, u'a');
    result(anna().addContact({hash, u"Dora"_s, hash, true, std::nullopt, std::nullopt}));
}

void TestOperationsAtHome::chatsAndMessages() {
    const QJsonObject group = result(anna().createChat(m_anna->id(), u"group"_s, u"Team"_s, {m_bert->id()}));
    m_chat = textAt(group, u"chat"_s, u"id"_s);
    QVERIFY(!m_chat.isEmpty());
    const QByteArray posted = result(anna().post(
        u"/api/messenger/chats/%1/messages"_s.arg(m_chat),
        {{u"user_id"_s, m_anna->person.id}, {u"content"_s, u"lunch @bert?"_s}, {u"type"_s, u"text"_s}},
        {{u"Idempotency-Key"_s, u"k1"_s}}));
    m_message = textAt(*json::parseObject(posted), u"message"_s, u"id"_s);
    QVERIFY(!m_message.isEmpty());
    QCOMPARE(result(bert().fetchMessages(m_chat, std::nullopt, 50)).size(), 1);
    QCOMPARE(result(bert().fetchMentions(m_bert->id())).size(), 1);
    result(anna().editMessage(m_message, m_anna->id(), u"dinner @bert?"_s));
    result(anna().pinMessage(m_chat, m_message));
    result(anna().unpinMessage(m_chat, m_message));
    result(bert().addReaction(m_message, u"👍"_s));
    QVERIFY(result(bert().toggleStar(m_message, m_bert->id(), false)));
    QCOMPARE(result(bert().fetchStarredMessages(m_bert->id())).size(), 1);
    QVERIFY(result(bert().toggleStar(m_message, m_bert->id(), true)));
    QCOMPARE(result(bert().fetchStarredMessages(m_bert->id())).size(), 0);
    // No translator is configured.
    QCOMPARE(outcomeOf(anna().translateMessage(m_message, u"ru"_s)).failure, u"api 503"_s);

    const QList<MessengerChat> chats = result(bert().fetchChats());
    QVERIFY(std::any_of(chats.begin(), chats.end(), [this](const auto &chat) { return chat.id == m_chat; }));
    QVERIFY(!textAt(result(anna().createChannel(u"News"_s, m_anna->id())), u"channel"_s, u"id"_s).isEmpty());
    QCOMPARE(result(anna().listChannels(m_anna->id())).size(), 1);
    QVERIFY(!textAt(result(anna().getOrCreateSavedChat(m_anna->id())), u"chat"_s, u"id"_s).isEmpty());
    QVERIFY(!textAt(result(anna().createChatInvite(m_chat, 168)), u"code"_s).isEmpty());
    const QJsonObject far =
        result(anna().createFederatedChat(u"Far"_s, {m_bert->id()}, {u"@x:far.example"_s}));
    QVERIFY(!textAt(far, u"chat"_s, u"id"_s).isEmpty());
}

void TestOperationsAtHome::foldersAndSearch() {
    const auto folder = result(anna().createChatFolder(u"Work"_s, u"📁"_s));
    QVERIFY(folder);
    result(anna().manageFolderChat(folder->id, m_chat, u"add"_s));
    const QList<ChatFolder> folders = result(anna().listChatFolders());
    QCOMPARE(folders.size(), 1);
    QCOMPARE(folders.first().chatIds, QList<QString>{m_chat});
    QCOMPARE(result(anna().globalSearch(u"dinner"_s, m_anna->id())).size(), 1);
    QCOMPARE(result(anna().semanticSearch(u"dinner"_s, m_anna->id(), m_chat)).size(), 1);
}

void TestOperationsAtHome::filesAndVoice() {
    QFile file(m_anna->signedIn.folder.filePath(u"отчёт.bin"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QByteArray content("\0\r\n--\xff voice", 12);
    file.write(content);
    file.close();
    const QUrl url = QUrl::fromLocalFile(file.fileName());
    const auto uploaded = result(anna().uploadFile(m_chat, url));
    QVERIFY(uploaded);
    QVERIFY2(!uploaded->isEmpty(), "an answer about the file");
    const QJsonObject message = result(anna().sendVoiceMessage(m_chat, url, u"voice-1"_s));
    QCOMPARE(textAt(message, u"type"_s), u"voice"_s);
    const QString id = textAt(result(anna().sendVoiceMessage(m_chat, url, u"voice-1"_s)), u"id"_s);
    QCOMPARE(id, textAt(message, u"id"_s));
    const QString voice = textAt(message, u"content"_s).section(u':', 1, 1);
    QCOMPARE(result(bert().downloadVoice(m_chat, voice)), content);
    // Nobody transcribes here.
    QCOMPARE(outcomeOf(anna().transcribeVoice(url)).failure, u"api 503"_s);
}

void TestOperationsAtHome::preKeys() {
    QCOMPARE(result(bert().uploadPreKeys(m_bert->id(), u"aWQ="_s, u"cHJl"_s, u"c2ln"_s, {u"b25l"_s})), 1);
    QCOMPARE(result(bert().checkPreKeyCount(m_bert->id())), 1);
    QCOMPARE(result(anna().fetchPreKeyBundle(m_bert->id()))->oneTimePreKey, QByteArray("one"));
    QCOMPARE(result(anna().fetchPreKeyBundle(m_bert->id()))->oneTimePreKey, std::nullopt);
    QCOMPARE(result(bert().checkPreKeyCount(m_bert->id())), 0);
}

void TestOperationsAtHome::intelligence() {
    const MessengerAPI::Texts asked{{u"role"_s, u"user"_s}, {u"content"_s, u"Can you come?"_s}};
    QVERIFY(!result(anna().smartReply({asked}, m_anna->id())).isEmpty());
    QVERIFY(!textAt(result(anna().summarizeChat(m_chat, u"day"_s, m_anna->id())), u"summary"_s).isEmpty());
    QVERIFY(!result(anna().personaReply(m_chat, {asked})).isEmpty());
    QVERIFY(!textAt(result(anna().aiAgentChat(u"dinner"_s, m_chat, m_anna->id())), u"reply"_s).isEmpty());
    QVERIFY(!textAt(result(anna().memoryQuery(u"dinner"_s)), u"answer"_s).isEmpty());
    QVERIFY(!textAt(result(anna().discoverThread(u"dinner"_s)), u"title"_s).isEmpty());
    const QStringList presets = result(anna().listChatAgents(m_chat)).presets;
    QVERIFY(!presets.isEmpty());
    result(anna().addChatAgent(m_chat, presets.first()));
    const auto agents = result(anna().listChatAgents(m_chat)).agents;
    QCOMPARE(agents.size(), 1);
    result(anna().removeChatAgent(m_chat, textAt(agents.first(), u"id"_s)));
    QVERIFY(result(anna().listChatAgents(m_chat)).agents.isEmpty());
}

void TestOperationsAtHome::botsAndSkills() {
    const QJsonObject form{{u"name"_s, u"Helper"_s},
                           {u"description"_s, u"d"_s},
                           {u"avatar_url"_s, u""_s},
                           {u"webhook_url"_s, u"builtin://echo"_s},
                           {u"web_app_url"_s, u"https://app.example/"_s},
                           {u"api_token"_s, u""_s},
                           {u"is_public"_s, true},
                           {u"user_id"_s, u"0"_s}};
    const QByteArray made = result(anna().post(u"/api/messenger/bots"_s, form));
    const QString bot = textAt(*json::parseObject(made), u"bot"_s, u"id"_s);
    QVERIFY(!json::objects(result(anna().listBots(m_anna->id())), u"bots").isEmpty());
    QVERIFY(!result(bert().discoverBots()).isEmpty());
    const QString chat = textAt(result(anna().openBotChat(bot)), u"chat_id"_s);
    QVERIFY(!chat.isEmpty());
    QVERIFY(!result(anna().botStats(bot)).isEmpty());
    QVERIFY(!textAt(result(anna().webappInit(bot, chat)), u"web_app_url"_s).isEmpty());
    result(anna().submitMiniAppData(bot, chat, {{u"answer"_s, 42}}));

    const QJsonObject skill{{u"name"_s, u"S"_s},          {u"description"_s, u"d"_s},
                            {u"category"_s, u"custom"_s}, {u"icon"_s, u"✨"_s},
                            {u"system_prompt"_s, u"p"_s}, {u"triggers"_s, QJsonArray()},
                            {u"is_public"_s, true}};
    const QByteArray published = result(anna().post(u"/api/messenger/skills"_s, skill));
    const QString id = textAt(*json::parseObject(published), u"skill"_s, u"id"_s);
    QVERIFY(!result(bert().listSkills()).skills.isEmpty());
    result(bert().rateSkill(id, 5));
    result(anna().installSkill(m_chat, id));
}

void TestOperationsAtHome::otherServersAndTheLocalNetwork() {
    const QByteArray info = result(anna().get(u"/api/messenger/federation/info"_s));
    QVERIFY(textAt(*json::parseObject(info), u"matrix_id"_s).startsWith(u"@anna:"));
    result(anna().addFederationPeer(u"down.example"_s, u"http://127.0.0.1:1"_s));
    QCOMPARE(result(anna().listFederationPeers()).size(), 1);
    QVERIFY(!textAt(result(anna().pingFederationPeer(u"down.example"_s)), u"status"_s).isEmpty());
    QVERIFY(!textAt(result(anna().discoverFederationPeer(u"@x:down.example"_s)), u"base_url"_s).isEmpty());

    const QString subnet = textAt(result(anna().registerP2P(u"192.168.7.5"_s)), u"subnet"_s);
    result(bert().registerP2P(u"192.168.7.6"_s));
    QCOMPARE(json::objects(result(anna().discoverP2P(subnet)), u"peers").size(), 1);
    result(bert().del(u"/api/messenger/p2p/register"_s, {}));
    QCOMPARE(json::objects(result(anna().discoverP2P(std::nullopt)), u"peers").size(), 0);
}

void TestOperationsAtHome::zeroKnowledgeGroups() {
    const QJsonObject jwk{{u"kty"_s, u"EC"_s}, {u"x"_s, u"a"_s}, {u"y"_s, u"b"_s}};
    result(bert().uploadZkIdentity(jwk));
    QCOMPARE(result(anna().fetchZkIdentity(m_bert->id())), jwk);
    const QJsonObject wrapped{{m_anna->id(), QJsonObject{{u"nonce"_s, u"1"_s}}},
                              {m_bert->id(), QJsonObject{{u"nonce"_s, u"2"_s}}}};
    const QJsonObject made = result(
        anna().createZkGroup({m_anna->id(), m_bert->id(), u"nobody"_s}, {{u"nonce"_s, u"n"_s}}, wrapped));
    QCOMPARE(textAt(result(bert().fetchZkSenderKey(textAt(made, u"chat_id"_s))), u"nonce"_s), u"2"_s);
}

void TestOperationsAtHome::theAccount() {
    const QByteArray exported = result(bert().get(u"/api/messenger/users/me/export"_s));
    QVERIFY(json::object(*json::parseObject(exported), u"user"));
    QVERIFY(!textAt(result(bert().createEncryptedBackup(u"backup-1"_s)), u"ciphertext"_s).isEmpty());
    result(anna().deleteMessage(m_message, m_anna->id()));
    QCOMPARE(outcomeOf(bert().deleteUserAccount(u"wrong"_s)).value, std::nullopt);
    result(bert().deleteUserAccount(u"secret-1"_s));
    QCOMPARE(outcomeOf(bert().fetchChats()).failure, u"api 401"_s);
}

QTEST_GUILESS_MAIN(TestOperationsAtHome)

#include "tst_operations_at_home.moc"
