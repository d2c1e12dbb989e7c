// SPDX-License-Identifier: MIT
#include "Server/MessengerAPI.h"
#include "Support/Await.h"
#include "Support/ScriptedHttpServer.h"
#include "Support/SignedInSession.h"
#include "Support/TestMain.h"

#include <functional>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

// How a result reads in the table.
QString told(bool yes) {
    return yes ? u"yes"_s : u"no"_s;
}
QString told(qint64 number) {
    return QString::number(number);
}
QString told(const QString &text) {
    return text;
}
QString told(const QByteArray &bytes) {
    return QString::fromLatin1(bytes);
}
QString told(const QJsonObject &map) {
    return QString::fromUtf8(json::compact(map));
}
QString told(const MessengerChat &chat) {
    return chat.id + u' ' + chat.title.value_or(u"-"_s);
}
QString told(const ChatFolder &folder) {
    return folder.id + u' ' + folder.name + u' ' + folder.chatIds.join(u'+');
}
QString told(const PreKeyBundle &bundle) {
    return QString::fromLatin1(bundle.identityKey + bundle.signedPreKey + bundle.signedPreKeySignature +
                               bundle.oneTimePreKey.value_or("-"));
}
template <typename T>
QString told(const QList<T> &list) {
    QStringList lines;
    for (const T &one : list)
        lines.append(told(one));
    return lines.join(u'|');
}
template <typename T>
QString told(const std::optional<T> &value) {
    return value ? told(*value) : u"absent"_s;
}
QString told(const ChatAgents &agents) {
    return told(agents.agents) + u'/' + agents.presets.join(u'|');
}
QString told(const SkillCatalogue &catalogue) {
    return told(catalogue.skills) + u'/' + catalogue.categories.join(u'|');
}

template <typename T>
QString resultOf(QCoro::Task<T> task) {
    const auto outcome = outcomeOf(std::move(task));
    return outcome.value ? told(*outcome.value) : outcome.failure;
}
QString resultOf(QCoro::Task<void> task) {
    const auto outcome = outcomeOf(std::move(task));
    return outcome.value ? u"done"_s : outcome.failure;
}

/// One operation of the interface: how it is called, what goes out, and what a good answer gives.
struct Operation {
    const char *name;
    std::function<QString(MessengerAPI &)> call;
    const char *method;
    const char *target;
    /// Compact JSON with its keys in order; null for a request without a body.
    const char *body;
    const char *answer;
    const char *result;
    /// A header beside those that every request has.
    const char *header = nullptr;
    const char *headerValue = nullptr;
};

#define CALL(...) [](MessengerAPI &api) { return resultOf(api.__VA_ARGS__); }

const std::vector<Operation> &operations() {
    static const std::vector<Operation> all{
        // Chats
        {"fetchChats", CALL(fetchChats()), "GET", "/api/messenger/chats", nullptr,
         R"({"chats":[{"id":"3","title":"T"},{"id":"4"}]})", "3 T|4 -"},
        {"createChat", CALL(createChat("7", "group", "Te\"am", {"8", "x", "-9"})), "POST",
         "/api/messenger/chats", R"({"participants":[8,0,-9],"title":"Te\"am","type":"group","user_id":7})",
         R"({"id":"5"})", R"({"id":"5"})"},
        {"createChat without a title", CALL(createChat("abc", "direct", std::nullopt, {})), "POST",
         "/api/messenger/chats", R"({"participants":[],"title":null,"type":"direct","user_id":0})", "[]",
         "api 500"},
        {"createChannel", CALL(createChannel("News", "7")), "POST", "/api/messenger/channels",
         R"({"title":"News","user_id":7})", "3", "api 500"},
        {"listChannels", CALL(listChannels("7")), "GET", "/api/messenger/channels?user_id=7", nullptr,
         R"({"channels":[{"id":"c"}]})", R"({"id":"c"})"},
        {"getOrCreateSavedChat", CALL(getOrCreateSavedChat("7")), "GET", "/api/messenger/saved?user_id=7",
         nullptr, R"({"chat":{}})", R"({"chat":{}})"},
        {"createChatInvite", CALL(createChatInvite("3", 168)), "POST", "/api/messenger/chats/3/invite",
         R"({"expires_hours":168})", "[]", "{}"},
        {"createFederatedChat", CALL(createFederatedChat("F", {"8", "x", "9"}, {"@a:far.example"})), "POST",
         "/api/messenger/chats/federated",
         R"({"local_participants":[8,9],"remote_participants":["@a:far.example"],"title":"F"})", "null",
         "{}"},
        // Messages
        {"fetchMessages, the latest", CALL(fetchMessages("3", std::nullopt, 50)), "GET",
         "/api/messenger/chats/3/messages?limit=50", nullptr, R"({"messages":[{"id":"b"},{"id":"a"}]})",
         R"({"id":"b"}|{"id":"a"})"},
        {"fetchMessages, older", CALL(fetchMessages("3", "1700000000.5&x", 1)), "GET",
         "/api/messenger/chats/3/messages?limit=1&before=1700000000.5&x", nullptr, "[]", ""},
        {"fetchMessages, a chat whose id looks like a place holder",
         CALL(fetchMessages("%2Fa%25", std::nullopt, 7)), "GET",
         "/api/messenger/chats/%2Fa%25/messages?limit=7", nullptr, R"({"messages":[]})", ""},
        {"a message, by the primitive",
         CALL(post("/api/messenger/chats/3/messages", {{"user_id", 7}, {"content", "c"}, {"type", "text"}},
                   {{"Idempotency-Key", "k"}})),
         "POST", "/api/messenger/chats/3/messages", R"({"content":"c","type":"text","user_id":7})", "raw",
         "raw", "Idempotency-Key", "k"},
        {"editMessage", CALL(editMessage("m", "7", "нов")), "PATCH", "/api/messenger/messages/m",
         R"({"content":"нов","user_id":7})", R"({"ok":true})", R"({"ok":true})"},
        {"deleteMessage", CALL(deleteMessage("m", "7")), "DELETE", "/api/messenger/messages/m",
         R"({"user_id":7})", "", "done"},
        {"pinMessage", CALL(pinMessage("3", "m")), "POST", "/api/messenger/chats/3/messages/pin",
         R"({"message_id":"m"})", "", "done"},
        {"unpinMessage", CALL(unpinMessage("3", "m")), "POST", "/api/messenger/chats/3/messages/unpin",
         R"({"message_id":"m"})", "", "done"},
        {"addReaction", CALL(addReaction("m", "👍")), "POST", "/api/messenger/messages/m/reactions",
         R"({"emoji":"👍"})", "{}", "{}"},
        {"toggleStar, to star", CALL(toggleStar("m", "7", false)), "POST", "/api/messenger/messages/m/star",
         R"({"user_id":7})", R"({"status":"starred"})", "yes"},
        {"toggleStar, to unstar", CALL(toggleStar("m", "7", true)), "DELETE",
         "/api/messenger/messages/m/star", R"({"user_id":7})", R"({"status":"unstarred"})", "yes"},
        {"toggleStar, in other words", CALL(toggleStar("m", "7", true)), "DELETE",
         "/api/messenger/messages/m/star", R"({"user_id":7})", R"({"status":"ok"})", "no"},
        {"toggleStar, no object", CALL(toggleStar("m", "7", true)), "DELETE",
         "/api/messenger/messages/m/star", R"({"user_id":7})", R"(["starred"])", "no"},
        {"fetchStarredMessages", CALL(fetchStarredMessages("7")), "GET", "/api/messenger/starred?user_id=7",
         nullptr, R"({"messages":[{}]})", "{}"},
        {"translateMessage", CALL(translateMessage("m", "ru")), "POST", "/api/messenger/messages/m/translate",
         R"({"target_lang":"ru"})", "true", "api 500"},
        {"fetchMentions", CALL(fetchMentions("7")), "GET", "/api/messenger/mentions?user_id=7", nullptr,
         R"({"mentions":[{"id":1}]})", R"({"id":1})"},
        // Search
        {"searchUsers", CALL(searchUsers("ann a%?&=+#é", "7")), "GET",
         "/api/messenger/users/search?q=ann%20a%25?&=+%23%C3%A9&user_id=7", nullptr, R"({"users":[{}]})",
         "{}"},
        {"globalSearch", CALL(globalSearch("\"<[]>\n👍", "7")), "GET",
         "/api/messenger/search/global?q=%22%3C%5B%5D%3E%0A%F0%9F%91%8D&user_id=7", nullptr,
         R"({"messages":[{}]})", "{}"},
        {"semanticSearch", CALL(semanticSearch("q", "7")), "POST", "/api/messenger/search/semantic",
         R"({"query":"q","user_id":7})", R"({"results":[{}]})", "{}"},
        {"semanticSearch in a chat", CALL(semanticSearch("q", "7", "3")), "POST",
         "/api/messenger/search/semantic", R"({"chat_id":"3","query":"q","user_id":7})",
         R"({"results":"none"})", ""},
        // Folders
        {"listChatFolders", CALL(listChatFolders()), "GET", "/api/messenger/folders", nullptr,
         R"({"folders":[{"id":"f","name":"N","chat_ids":["3"]},{"id":7},{"id":"g"}]})", "f N 3|g Folder "},
        {"createChatFolder", CALL(createChatFolder("N", "📁")), "POST", "/api/messenger/folders",
         R"({"icon":"📁","name":"N"})", R"({"folder":{"id":"f","name":"N"}})", "f N "},
        {"createChatFolder, no folder in the answer", CALL(createChatFolder("N", "📁")), "POST",
         "/api/messenger/folders", R"({"icon":"📁","name":"N"})", R"({"folder":[]})", "absent"},
        {"manageFolderChat", CALL(manageFolderChat("f", "3", "add")), "POST",
         "/api/messenger/folders/f/chats", R"({"action":"add","chat_id":"3"})", "", "done"},
        // Voice, push
        {"downloadVoice", CALL(downloadVoice("3", "v")), "GET", "/api/messenger/voice/3/v.m4a", nullptr,
         "\x01raw", "\x01raw"},
        {"registerPushToken", CALL(registerPushToken("0aff", "0", "macos")), "POST",
         "/api/messenger/push/register", R"({"device_token":"0aff","platform":"macos","user_id":0})", "",
         "done"},
        // Contacts
        {"fetchContacts", CALL(fetchContacts("7")), "GET", "/api/messenger/contacts?user_id=7", nullptr,
         R"({"contacts":[{"id":8}]})", R"({"id":8})"},
        {"getContactRequests", CALL(getContactRequests("7")), "GET",
         "/api/messenger/contacts/requests?user_id=7", nullptr, R"({"requests":[{"id":8}]})", R"({"id":8})"},
        {"sendContactRequest", CALL(sendContactRequest("7", "x")), "POST", "/api/messenger/contacts/request",
         R"({"contact_id":0,"user_id":7})", R"({"status":"pending"})", "pending"},
        {"sendContactRequest, a number for a status", CALL(sendContactRequest("7", "8")), "POST",
         "/api/messenger/contacts/request", R"({"contact_id":8,"user_id":7})", R"({"status":1})", "error"},
        {"handleContactRequest", CALL(handleContactRequest("7", "8", "accept")), "POST",
         "/api/messenger/contacts/requests/8", R"({"action":"accept","user_id":7})", "[]", "error"},
        {"addContact", CALL(addContact({"h", "D", "h", true, std::nullopt, "a"})), "POST",
         "/api/messenger/contacts/add",
         R"({"avatar_hash":"a","display_name":"D","from_address_book":true,"organization":null,"phone_hash":"h"})",
         "", "done"},
        // Keys
        {"uploadPreKeys", CALL(uploadPreKeys("7", "aWQ=", "cHJl", "c2ln", {"b25l", "dHdv"})), "POST",
         "/api/messenger/keys/upload",
         R"({"identity_key":"aWQ=","one_time_pre_keys":["b25l","dHdv"],"signed_pre_key":"cHJl","signed_pre_key_signature":"c2ln","user_id":7})",
         R"({"uploaded":2})", "2"},
        {"uploadPreKeys, not told how many", CALL(uploadPreKeys("7", "", "", "", {})), "POST",
         "/api/messenger/keys/upload",
         R"({"identity_key":"","one_time_pre_keys":[],"signed_pre_key":"","signed_pre_key_signature":"","user_id":7})",
         "{}", "0"},
        {"fetchPreKeyBundle", CALL(fetchPreKeyBundle("8")), "GET", "/api/messenger/keys/8", nullptr,
         R"({"identity_key":"aWQ=","signed_pre_key":"cHJl","signed_pre_key_signature":"c2ln"})", "idpresig-"},
        {"fetchPreKeyBundle, no bundle", CALL(fetchPreKeyBundle("8")), "GET", "/api/messenger/keys/8",
         nullptr, "7", "absent"},
        {"checkPreKeyCount", CALL(checkPreKeyCount("7")), "GET", "/api/messenger/keys/7/count", nullptr,
         R"({"pre_keys_remaining":19})", "19"},
        {"checkPreKeyCount, a text", CALL(checkPreKeyCount("7")), "GET", "/api/messenger/keys/7/count",
         nullptr, R"({"pre_keys_remaining":"19"})", "0"},
        // Devices, the account
        {"registerDevice", CALL(registerDevice()), "POST", "/api/messenger/devices/register",
         R"({"device_id":"dev_1","device_name":"Mac","platform":"macos"})", "", "done"},
        {"listDevices", CALL(listDevices()), "GET", "/api/messenger/devices", nullptr, R"({"devices":[{}]})",
         "{}"},
        {"revokeDevice", CALL(revokeDevice("dev_2")), "DELETE", "/api/messenger/devices/dev_2", "{}", "",
         "done"},
        {"pullDeviceSync, from the session's cursor", CALL(pullDeviceSync()), "GET",
         "/api/messenger/sync?since=11", nullptr, R"({"cursor":12})", R"({"cursor":12})"},
        {"pullDeviceSync, from the beginning", CALL(pullDeviceSync(0)), "GET", "/api/messenger/sync?since=0",
         nullptr, "[]", "{}"},
        {"the export, by the primitive", CALL(get("/api/messenger/users/me/export")), "GET",
         "/api/messenger/users/me/export", nullptr, "raw", "raw"},
        {"deleteUserAccount", CALL(deleteUserAccount("pw")), "DELETE", "/api/messenger/users/me",
         R"({"password":"pw"})", "", "done"},
        {"createEncryptedBackup", CALL(createEncryptedBackup("pw")), "POST", "/api/messenger/users/me/backup",
         R"({"password":"pw"})", R"({"salt":"s"})", R"({"salt":"s"})"},
        // AI
        {"smartReply", CALL(smartReply({{{"role", "user"}, {"content", "hi"}}}, "7")), "POST",
         "/api/chat/smart-reply", R"({"messages":[{"content":"hi","role":"user"}],"user_id":7})", "[]",
         "api 500"},
        {"summarizeChat", CALL(summarizeChat("3", "day", "7")), "POST", "/api/chat/summarize",
         R"({"chat_id":"3","period":"day","user_id":7})", "[]", "api 500"},
        {"personaReply", CALL(personaReply("3", {})), "POST", "/api/chat/persona-reply",
         R"({"chat_id":"3","messages":[]})", "[]", "{}"},
        {"aiAgentChat", CALL(aiAgentChat("m", "3", "7")), "POST", "/api/chat/agent",
         R"({"chat_id":"3","message":"m","user_id":7})", "[]", "api 500"},
        {"memoryQuery", CALL(memoryQuery("q")), "POST", "/api/chat/memory", R"({"query":"q"})", "[]", "{}"},
        {"memoryQuery in a chat", CALL(memoryQuery("q", "3")), "POST", "/api/chat/memory",
         R"({"chat_id":"3","query":"q"})", "{}", "{}"},
        {"discoverThread", CALL(discoverThread("q")), "POST", "/api/chat/threads/discover",
         R"({"query":"q"})", "1", "{}"},
        {"listChatAgents", CALL(listChatAgents("3")), "GET", "/api/messenger/chats/3/agents", nullptr,
         R"({"presets":["p","q"]})", "/p|q"},
        {"addChatAgent", CALL(addChatAgent("3", "r")), "POST", "/api/messenger/chats/3/agents",
         R"({"role":"r"})", "", "done"},
        {"removeChatAgent", CALL(removeChatAgent("3", "%2Fa%25")), "DELETE",
         "/api/messenger/chats/3/agents/%2Fa%25", "{}", "", "done"},
        // Bots, mini apps, skills
        {"listBots", CALL(listBots("7")), "GET", "/api/messenger/bots?user_id=7", nullptr, "[]", "{}"},
        {"discoverBots", CALL(discoverBots()), "GET", "/api/messenger/bots/discover", nullptr,
         R"({"bots":[{"id":"b"}]})", R"({"id":"b"})"},
        {"openBotChat", CALL(openBotChat("b")), "POST", "/api/messenger/bots/b/chat", "{}", "[]", "{}"},
        {"botStats", CALL(botStats("b")), "GET", "/api/messenger/bots/b/stats", nullptr, "[]", "{}"},
        {"webappInit", CALL(webappInit("b", "3")), "GET", "/api/messenger/bots/b/webapp-init?chat_id=3",
         nullptr, "[]", "{}"},
        {"submitMiniAppData", CALL(submitMiniAppData("b", "3", {{"k", 1.5}})), "POST",
         "/api/messenger/miniapp/submit", R"({"bot_id":"b","chat_id":"3","data":{"k":1.5}})", "", "done"},
        {"listSkills", CALL(listSkills()), "GET", "/api/messenger/skills", nullptr,
         R"({"skills":[{"id":"s"}],"categories":["c",1]})", R"({"id":"s"}/)"},
        {"installSkill", CALL(installSkill("3", "s")), "POST", "/api/messenger/chats/3/skills/s", "{}", "",
         "done"},
        {"rateSkill", CALL(rateSkill("s", 5)), "POST", "/api/messenger/skills/s/rate", R"({"rating":5})", "",
         "done"},
        // Federation, local network
        {"listFederationPeers", CALL(listFederationPeers()), "GET", "/api/messenger/federation/peers",
         nullptr, R"({"peers":[{}]})", "{}"},
        {"addFederationPeer", CALL(addFederationPeer("far.example", "https://far.example")), "POST",
         "/api/messenger/federation/peers", R"({"base_url":"https://far.example","domain":"far.example"})",
         "", "done"},
        {"pingFederationPeer", CALL(pingFederationPeer("far.example")), "POST",
         "/api/messenger/federation/peers/far.example/ping", "{}", "[]", "{}"},
        {"discoverFederationPeer", CALL(discoverFederationPeer("@a:far.example")), "POST",
         "/api/messenger/federation/peers/discover",
         R"({"domain":"@a:far.example","mx_id":"@a:far.example"})", "[]", "{}"},
        {"registerP2P", CALL(registerP2P("192.168.0.2")), "POST", "/api/messenger/p2p/register",
         R"({"device_id":"dev_1","local_ip":"192.168.0.2"})", R"({"subnet":"s"})", R"({"subnet":"s"})"},
        {"discoverP2P", CALL(discoverP2P("192.168.0")), "GET", "/api/messenger/p2p/discover?subnet=192.168.0",
         nullptr, "[]", "{}"},
        {"discoverP2P, an empty subnet", CALL(discoverP2P("")), "GET", "/api/messenger/p2p/discover", nullptr,
         "[]", "{}"},
        // Zero-knowledge groups
        {"uploadZkIdentity", CALL(uploadZkIdentity({{"x", "X"}})), "POST", "/api/messenger/zk/identity",
         R"({"public_key_jwk":{"x":"X"}})", "", "done"},
        {"fetchZkIdentity", CALL(fetchZkIdentity("8")), "GET", "/api/messenger/zk/identity/8", nullptr,
         R"({"public_key_jwk":{"x":"X"}})", R"({"x":"X"})"},
        {"fetchZkIdentity, nothing in it", CALL(fetchZkIdentity("8")), "GET", "/api/messenger/zk/identity/8",
         nullptr, "{}", "badResponse"},
        {"createZkGroup", CALL(createZkGroup({"8", "x"}, {{"nonce", "n"}}, {{"8", QJsonObject{}}})), "POST",
         "/api/messenger/chats/zk",
         R"({"encrypted_meta":{"nonce":"n"},"participants":[8],"wrapped_keys":{"8":{}}})",
         R"({"chat_id":"9"})", R"({"chat_id":"9"})"},
        {"fetchZkSenderKey", CALL(fetchZkSenderKey("9")), "GET", "/api/messenger/chats/9/zk/key", nullptr,
         R"({"wrapped_key":"none"})", "badResponse"},
    };
    return all;
}

} // namespace

class TestMessengerApi : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void operationsGoOutAndComeBackExactly_data() { eachOperation(); }
    void operationsGoOutAndComeBackExactly();
    void operationsPassFailuresOn_data() { eachOperation(); }
    void operationsPassFailuresOn();
    void chatListIsReadStrictly_data();
    void chatListIsReadStrictly();

private:
    static void eachOperation() {
        QTest::addColumn<int>("index");
        for (size_t index = 0; index < operations().size(); ++index)
            QTest::newRow(operations()[index].name) << int(index);
    }

    ScriptedHttpServer m_server;
    std::unique_ptr<SignedInSession> m_signedIn;
    std::unique_ptr<MessengerAPI> m_api;
};

void TestMessengerApi::init() {
    m_server.reset();
    m_signedIn = std::make_unique<SignedInSession>();
    m_signedIn->session.adoptDeviceId(u"dev_1"_s);
    m_signedIn->session.adoptSyncCursor(11);
    m_api = std::make_unique<MessengerAPI>(m_server.base(), m_signedIn->session);
}

void TestMessengerApi::operationsGoOutAndComeBackExactly() {
    QFETCH(int, index);
    const Operation &operation = operations()[size_t(index)];
    m_server.answerNext(ScriptedAnswer::of(200, operation.answer));
    QCOMPARE(operation.call(*m_api), QString::fromUtf8(operation.result));
    QCOMPARE(m_server.requests().size(), 1);
    const RecordedRequest sent = m_server.lastRequest();
    QCOMPARE(sent.method, operation.method);
    QCOMPARE(sent.target, operation.target);
    QCOMPARE(sent.body, QByteArray(operation.body));
    QCOMPARE(sent.headers.value("authorization"), "Bearer t0k");
    QCOMPARE(sent.headers.contains("idempotency-key"), qstrcmp(operation.header, "Idempotency-Key") == 0);
    if (operation.header)
        QCOMPARE(sent.headers.value(QByteArray(operation.header).toLower()), operation.headerValue);
}

void TestMessengerApi::operationsPassFailuresOn() {
    QFETCH(int, index);
    const Operation &operation = operations()[size_t(index)];
    m_server.answerNext(ScriptedAnswer::of(403, operation.answer));
    QCOMPARE(operation.call(*m_api), u"api 403"_s);
    m_server.answerNext(ScriptedAnswer::truncated(operation.answer));
    QCOMPARE(operation.call(*m_api), u"transport"_s);
    m_server.answerNext(ScriptedAnswer::of(200, "<html>"));
    const bool readsNothing = qstrcmp(operation.result, "done") == 0;
    const bool readsBytes = qstrcmp(operation.result, operation.answer) == 0 && *operation.result != '{';
    const char *unreadable = readsNothing ? "done" : readsBytes ? "<html>" : "json";
    QCOMPARE(operation.call(*m_api), QString::fromLatin1(unreadable));
}

void TestMessengerApi::chatListIsReadStrictly_data() {
    QTest::addColumn<QByteArray>("body");
    for (const char *body : {"[]", "{}", R"({"messages":[]})", R"({"chats":[{"id":7}]})",
                             R"({"chats":[{"id":"7"},{"id":"8","unread_count":"1"}]})"})
        QTest::newRow(body) << QByteArray(body);
}

void TestMessengerApi::chatListIsReadStrictly() {
    QFETCH(QByteArray, body);
    m_server.answerNext(ScriptedAnswer::of(200, body));
    QCOMPARE(resultOf(m_api->fetchChats()), u"decoding"_s);
}

ORVANE_TEST_MAIN(TestMessengerApi)

#include "tst_messenger_api.moc"
