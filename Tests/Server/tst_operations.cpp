// SPDX-License-Identifier: MIT
#include "HomeServer/Client.h"
#include "Server/MessengerAPI.h"
#include "Support/Await.h"
#include "Support/InRow.h"
#include "Support/ScriptedHttpServer.h"
#include "Support/SignedInSession.h"
#include "Support/TestMain.h"

#include <QFile>
#include <QRegularExpression>

#include <functional>

using namespace Qt::StringLiterals;

using namespace orvane;
using homeserver::test::Person;
using homeserver::test::Site;

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

/// What the operations are about: here as the recording server gets it, later what the home server gave.
struct Names {
    QString me = u"7"_s;
    QString peer = u"8"_s;
    QString chat = u"3"_s;
    QString message = u"m"_s;
    QString folder = u"f"_s;
    QString preset = u"r"_s;
    /// Goes into paths, and looks like place holders there.
    QString agent = u"%2Fa%25"_s;
    QString bot = u"b"_s;
    QString botChat = u"3"_s;
    QString skill = u"s"_s;
    QString subnet = u"192.168.0"_s;
    QString zkChat = u"9"_s;
    QString voice = u"v"_s;
};

enum Who { nobody, anna, bert };

/// One operation of the interface: how it is called, what goes out and what a good answer gives at a server
/// that only records, and what it gives at the home server.
struct Operation {
    const char *name;
    std::function<QString(MessengerAPI &, const Names &)> call;
    /// Method and path, which begins below "/api/messenger/" where it has no slash; null for what is of no
    /// interest there.
    const char *request;
    /// Compact JSON with its keys in order; null for a request without a body, empty for a file.
    const char *body;
    const char *answer;
    const char *result;
    /// Who calls it at home, in the order of the table, and the pattern of the result.
    Who caller = nobody;
    const char *atHome = nullptr;
    /// What the pattern's group has found is called so from then on.
    QString Names::*keptAs = nullptr;
};

#define OP(...)                                                                                              \
#__VA_ARGS__,                                                                                            \
        [](MessengerAPI & api, [[maybe_unused]] const Names &n) { return resultOf(api.__VA_ARGS__); }

const QList<QMap<QString, QString>> asked{{{u"role"_s, u"user"_s}, {u"content"_s, u"hi"_s}}};
const QJsonObject jwk{{"kty", "EC"}, {"x", "a"}, {"y", "b"}};
const QJsonObject botForm{{"name", "Helper"},
                          {"description", "d"},
                          {"avatar_url", ""},
                          {"webhook_url", "builtin://echo"},
                          {"web_app_url", "https://app.example/"},
                          {"api_token", ""},
                          {"is_public", true},
                          {"user_id", "0"}};
const QJsonObject skillForm{{"name", "S"},      {"description", "d"},   {"category", "custom"},
                            {"icon", "✨"},      {"system_prompt", "p"}, {"triggers", QJsonArray()},
                            {"is_public", true}};

QUrl fileNamed(const QString &name, const QByteArray &bytes) {
    static const QTemporaryDir folder;
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("no test file");
    return QUrl::fromLocalFile(file.fileName());
}
QUrl someFile() {
    return fileNamed(u"отчёт.bin"_s, QByteArray("\0\r\n--\xff voice", 12));
}

QJsonObject messageOf(const Names &n) {
    return {{"user_id", n.me.toLongLong()}, {"content", "dinner @bert?"}, {"type", "text"}};
}
QJsonObject keysOf(const Names &n) {
    return {{n.me, QJsonObject{{"nonce", "1"}}}, {n.peer, QJsonObject{{"nonce", "2"}}}};
}

const std::vector<Operation> &operations() {
    static const std::vector<Operation> all{
        // Devices
        {OP(registerDevice()), "POST devices/register",
         R"({"device_id":"dev_1","device_name":"Mac","platform":"macos"})", "", "done", anna, "done"},
        {OP(revokeDevice("dev_2")), "DELETE devices/dev_2", "{}", "", "done", anna, "done"},
        {OP(listDevices()), "GET devices", nullptr, R"({"devices":[{}]})", "{}", anna,
         R"(\{[^|]*"device-1"[^|]*\})"},
        {OP(pullDeviceSync()), "GET sync?since=11", nullptr, R"({"cursor":12})", R"({"cursor":12})", anna,
         R"(.*"cursor":\d+.*)"},
        {OP(pullDeviceSync(0)), "GET sync?since=0", nullptr, "[]", "{}"},
        {OP(registerPushToken("0aff", n.me, "macos")), "POST push/register",
         R"({"device_token":"0aff","platform":"macos","user_id":7})", "", "done", anna, "done"},
        // People
        {OP(searchUsers("ann a%?&=+#é", n.me)), "GET users/search?q=ann%20a%25?&=+%23%C3%A9&user_id=7",
         nullptr, R"({"users":[{}]})", "{}"},
        {OP(searchUsers("ber", n.me)), "GET users/search?q=ber&user_id=7", nullptr, "{}", "", anna,
         R"(\{[^|]*"bert"[^|]*\})"},
        {OP(sendContactRequest(n.me, "x")), "POST contacts/request", R"({"contact_id":0,"user_id":7})",
         R"({"status":1})", "error"},
        {OP(sendContactRequest(n.me, n.peer)), "POST contacts/request", R"({"contact_id":8,"user_id":7})",
         R"({"status":"pending"})", "pending", anna, "pending"},
        {OP(getContactRequests(n.me)), "GET contacts/requests?user_id=7", nullptr,
         R"({"requests":[{"id":8}]})", R"({"id":8})", bert, R"(\{[^|]+\})"},
        {OP(handleContactRequest(n.me, n.peer, "accept")), "POST contacts/requests/8",
         R"({"action":"accept","user_id":7})", "[]", "error", bert, "(?!error).+"},
        {OP(fetchContacts(n.me)), "GET contacts?user_id=7", nullptr, R"({"contacts":[{"id":8}]})",
         R"({"id":8})", anna, ".*\"bert\".*"},
        {OP(addContact({"h", "D", "h", true, std::nullopt, "a"})), "POST contacts/add",
         R"({"avatar_hash":"a","display_name":"D","from_address_book":true,"organization":null,"phone_hash":"h"})",
         "", "done"},
        {OP(addContact({QString(64, 'a'), "D", QString(64, 'a'), true, std::nullopt, std::nullopt})), nullptr,
         nullptr, nullptr, nullptr, anna, "done"},
        // Chats
        {OP(createChat(n.me, "group", "Te\"am", {"8", "x", "-9"})), "POST chats",
         R"({"participants":[8,0,-9],"title":"Te\"am","type":"group","user_id":7})", R"({"id":"5"})",
         R"({"id":"5"})"},
        {OP(createChat("abc", "direct", std::nullopt, {})), "POST chats",
         R"({"participants":[],"title":null,"type":"direct","user_id":0})", "[]", "api 500"},
        {OP(createChat(n.me, "group", "Team", {n.peer})), nullptr, nullptr, nullptr, nullptr, anna,
         R"re(.*"chat":\{[^}]*"id":"([^"]+)".*)re", &Names::chat},
        {OP(createChannel("News", n.me)), "POST channels", R"({"title":"News","user_id":7})", "3", "api 500",
         anna, R"re(.*"channel":\{.*"id":"[^"]+".*)re"},
        {OP(listChannels(n.me)), "GET channels?user_id=7", nullptr, R"({"channels":[{"id":"c"}]})",
         R"({"id":"c"})", anna, R"(\{[^|]*"News"[^|]*\})"},
        {OP(getOrCreateSavedChat(n.me)), "GET saved?user_id=7", nullptr, R"({"chat":{}})", R"({"chat":{}})",
         anna, R"re(.*"chat":\{.*"id":"[^"]+".*)re"},
        {OP(createChatInvite(n.chat, 168)), "POST chats/3/invite", R"({"expires_hours":168})", "[]", "{}",
         anna, R"re(.*"code":"[^"]+".*)re"},
        {OP(createFederatedChat("F", {n.peer, "x", n.me}, {"@a:far.example"})), "POST chats/federated",
         R"({"local_participants":[8,7],"remote_participants":["@a:far.example"],"title":"F"})", "null", "{}",
         anna, R"re(.*"chat":\{.*"id":"[^"]+".*)re"},
        // Messages
        {OP(post("/api/messenger/chats/" + n.chat + "/messages", messageOf(n), {{"Idempotency-Key", "k"}})),
         "POST chats/3/messages", R"({"content":"dinner @bert?","type":"text","user_id":7})", "raw", "raw",
         anna, R"re(.*"message":\{.*"id":"([^"]+)".*)re", &Names::message},
        {OP(fetchMessages(n.chat, std::nullopt, 50)), "GET chats/3/messages?limit=50", nullptr,
         R"({"messages":[{"id":"b"},{"id":"a"}]})", R"({"id":"b"}|{"id":"a"})", bert,
         R"(\{[^|]*"dinner @bert\?"[^|]*\})"},
        {OP(fetchMessages(n.chat, "1700000000.5&x", 1)), "GET chats/3/messages?limit=1&before=1700000000.5&x",
         nullptr, "[]", ""},
        {OP(fetchMessages("%2Fa%25", std::nullopt, 7)), "GET chats/%2Fa%25/messages?limit=7", nullptr,
         R"({"messages":[]})", ""},
        {OP(fetchMentions(n.me)), "GET mentions?user_id=7", nullptr, R"({"mentions":[{"id":1}]})",
         R"({"id":1})", bert, R"(\{[^|]+\})"},
        {OP(editMessage(n.message, n.me, "dinner, @bert?")), "PATCH messages/m",
         R"({"content":"dinner, @bert?","user_id":7})", R"({"ok":true})", R"({"ok":true})", anna, ".+"},
        {OP(pinMessage(n.chat, n.message)), "POST chats/3/messages/pin", R"({"message_id":"m"})", "", "done",
         anna, "done"},
        {OP(unpinMessage(n.chat, n.message)), "POST chats/3/messages/unpin", R"({"message_id":"m"})", "",
         "done", anna, "done"},
        {OP(addReaction(n.message, "👍")), "POST messages/m/reactions", R"({"emoji":"👍"})", "{}", "{}", bert,
         ".*👍.*"},
        {OP(toggleStar(n.message, n.me, false)), "POST messages/m/star", R"({"user_id":7})",
         R"({"status":"starred"})", "yes", bert, "yes"},
        {OP(fetchStarredMessages(n.me)), "GET starred?user_id=7", nullptr, R"({"messages":[{}]})", "{}", bert,
         R"(\{[^|]+\})"},
        {OP(toggleStar(n.message, n.me, true)), "DELETE messages/m/star", R"({"user_id":7})",
         R"({"status":"unstarred"})", "yes", bert, "yes"},
        {OP(toggleStar(n.message, n.me, true)), "DELETE messages/m/star", R"({"user_id":7})",
         R"({"status":"ok"})", "no"},
        {OP(toggleStar(n.message, n.me, true)), "DELETE messages/m/star", R"({"user_id":7})",
         R"(["starred"])", "no"},
        {OP(fetchStarredMessages(n.me)), nullptr, nullptr, nullptr, nullptr, bert, ""},
        // No translator is configured.
        {OP(translateMessage(n.message, "ru")), "POST messages/m/translate", R"({"target_lang":"ru"})",
         "true", "api 500", anna, "api 503"},
        {OP(fetchChats()), "GET chats", nullptr, R"({"chats":[{"id":"3","title":"T"},{"id":"4"}]})",
         "3 T|4 -", bert, ".* Team.*"},
        // Search and folders
        {OP(globalSearch("\"<[]>\n👍", n.me)), "GET search/global?q=%22%3C%5B%5D%3E%0A%F0%9F%91%8D&user_id=7",
         nullptr, R"({"messages":[{}]})", "{}"},
        {OP(globalSearch("dinner,", n.me)), "GET search/global?q=dinner,&user_id=7", nullptr, "{}", "", anna,
         R"(\{[^|]+\})"},
        {OP(semanticSearch("dinner", n.me)), "POST search/semantic", R"({"query":"dinner","user_id":7})",
         R"({"results":[{}]})", "{}"},
        {OP(semanticSearch("dinner", n.me, n.chat)), "POST search/semantic",
         R"({"chat_id":"3","query":"dinner","user_id":7})", R"({"results":"none"})", "", anna,
         R"(\{[^|]+\})"},
        {OP(createChatFolder("N", "📁")), "POST folders", R"({"icon":"📁","name":"N"})",
         R"({"folder":{"id":"f","name":"N"}})", "f N ", anna, R"((\S+) N )", &Names::folder},
        {OP(createChatFolder("N", "📁")), "POST folders", R"({"icon":"📁","name":"N"})", R"({"folder":[]})",
         "absent"},
        {OP(manageFolderChat(n.folder, n.chat, "add")), "POST folders/f/chats",
         R"({"action":"add","chat_id":"3"})", "", "done", anna, "done"},
        {OP(listChatFolders()), "GET folders", nullptr,
         R"({"folders":[{"id":"f","name":"N","chat_ids":["3"]},{"id":7},{"id":"g"}]})", "f N 3|g Folder ",
         anna, R"(\S+ N [^ +|]+)"},
        // Files and voice; nobody transcribes at home.
        {OP(uploadFile("3", someFile())), "POST files/upload", "", R"({"url":"u"})", R"({"url":"u"})"},
        {OP(uploadFile(n.chat, someFile())), "POST files/upload", "", "[]", "absent", anna, R"(\{".*)"},
        {OP(sendVoiceMessage(n.chat, someFile(), "key-1")), "POST chats/3/voice-messages", "",
         R"({"message":{"id":"m"}})", R"({"id":"m"})", anna,
         R"re(.*"content":"[^:"]*:([^:"]+)[:"].*"type":"voice".*)re", &Names::voice},
        {OP(sendVoiceMessage(n.chat, someFile(), "key-1")), "POST chats/3/voice-messages", "", "{}",
         "api 500", anna, R"re(.*"content":"[^:"]*:$voice[:"].*)re"},
        {OP(sendVoiceMessage(n.chat, someFile(), "key-1")), "POST chats/3/voice-messages", "", "[]",
         "api 500"},
        {OP(downloadVoice(n.chat, n.voice)), "GET voice/3/v.m4a", nullptr, "\x01raw", "\x01raw", bert,
         R"(\x00\r\n--\xff voice)"},
        {OP(transcribeVoice(someFile())), "POST voice/transcribe", "", R"({"text":"t"})", R"({"text":"t"})",
         anna, "api 503"},
        {OP(transcribeVoice(someFile())), "POST voice/transcribe", "", "1", "api 500"},
        // Keys
        {OP(uploadPreKeys(n.me, "aWQ=", "cHJl", "c2ln", {"b25l", "dHdv"})), "POST keys/upload",
         R"({"identity_key":"aWQ=","one_time_pre_keys":["b25l","dHdv"],"signed_pre_key":"cHJl","signed_pre_key_signature":"c2ln","user_id":7})",
         R"({"uploaded":2})", "2", bert, "2"},
        {OP(uploadPreKeys(n.me, "", "", "", {})), "POST keys/upload",
         R"({"identity_key":"","one_time_pre_keys":[],"signed_pre_key":"","signed_pre_key_signature":"","user_id":7})",
         "{}", "0"},
        {OP(checkPreKeyCount(n.me)), "GET keys/7/count", nullptr, R"({"pre_keys_remaining":19})", "19", bert,
         "2"},
        {OP(fetchPreKeyBundle(n.peer)), "GET keys/8", nullptr,
         R"({"identity_key":"aWQ=","signed_pre_key":"cHJl","signed_pre_key_signature":"c2ln"})", "idpresig-",
         anna, "idpresigone"},
        {OP(fetchPreKeyBundle(n.peer)), "GET keys/8", nullptr, "7", "absent", anna, "idpresigtwo"},
        {OP(fetchPreKeyBundle(n.peer)), nullptr, nullptr, nullptr, nullptr, anna, "idpresig-"},
        {OP(checkPreKeyCount(n.me)), "GET keys/7/count", nullptr, R"({"pre_keys_remaining":"19"})", "0", bert,
         "0"},
        // AI
        {OP(smartReply(asked, n.me)), "/api/chat/smart-reply",
         R"({"messages":[{"content":"hi","role":"user"}],"user_id":7})", "[]", "api 500", anna,
         R"re(.*"replies":\[".*)re"},
        {OP(summarizeChat(n.chat, "day", n.me)), "/api/chat/summarize",
         R"({"chat_id":"3","period":"day","user_id":7})", "[]", "api 500", anna,
         R"re(.*"summary":"[^"].*)re"},
        {OP(personaReply(n.chat, asked)), "/api/chat/persona-reply",
         R"({"chat_id":"3","messages":[{"content":"hi","role":"user"}]})", "[]", "{}", anna, R"(\{".*)"},
        {OP(aiAgentChat("m", n.chat, n.me)), "/api/chat/agent",
         R"({"chat_id":"3","message":"m","user_id":7})", "[]", "api 500", anna, R"re(.*"reply":"[^"].*)re"},
        {OP(memoryQuery("q")), "/api/chat/memory", R"({"query":"q"})", "[]", "{}", anna,
         R"re(.*"answer":"[^"].*)re"},
        {OP(memoryQuery("q", n.chat)), "/api/chat/memory", R"({"chat_id":"3","query":"q"})", "{}", "{}"},
        {OP(discoverThread("dinner")), "/api/chat/threads/discover", R"({"query":"dinner"})", "1", "{}", anna,
         R"re(.*"title":"[^"].*)re"},
        {OP(listChatAgents(n.chat)), "GET chats/3/agents", nullptr, R"({"presets":["p","q"]})", "/p|q", anna,
         R"(/([^|]+).*)", &Names::preset},
        {OP(addChatAgent(n.chat, n.preset)), "POST chats/3/agents", R"({"role":"r"})", "", "done", anna,
         "done"},
        {OP(listChatAgents(n.chat)), nullptr, nullptr, nullptr, nullptr, anna,
         R"re(\{[^|]*"id":"([^"]+)"[^|]*\}/.*)re", &Names::agent},
        {OP(removeChatAgent(n.chat, n.agent)), "DELETE chats/3/agents/%2Fa%25", "{}", "", "done", anna,
         "done"},
        {OP(listChatAgents(n.chat)), nullptr, nullptr, nullptr, nullptr, anna, "/.*"},
        // Bots, mini apps, skills
        {OP(post("/api/messenger/bots", botForm)), nullptr, nullptr, nullptr, nullptr, anna,
         R"re(.*"bot":\{.*"id":"([^"]+)".*)re", &Names::bot},
        {OP(listBots(n.me)), "GET bots?user_id=7", nullptr, "[]", "{}", anna, ".*\"Helper\".*"},
        {OP(discoverBots()), "GET bots/discover", nullptr, R"({"bots":[{"id":"b"}]})", R"({"id":"b"})", bert,
         ".*\"Helper\".*"},
        {OP(openBotChat(n.bot)), "POST bots/b/chat", "{}", "[]", "{}", anna, R"re(.*"chat_id":"([^"]+)".*)re",
         &Names::botChat},
        {OP(botStats(n.bot)), "GET bots/b/stats", nullptr, "[]", "{}", anna, R"(\{".*)"},
        {OP(webappInit(n.bot, n.botChat)), "GET bots/b/webapp-init?chat_id=3", nullptr, "[]", "{}", anna,
         R"(.*"https://app\.example/.*)"},
        {OP(submitMiniAppData(n.bot, n.botChat, {{"k", 1.5}})), "POST miniapp/submit",
         R"({"bot_id":"b","chat_id":"3","data":{"k":1.5}})", "", "done", anna, "done"},
        {OP(post("/api/messenger/skills", skillForm)), nullptr, nullptr, nullptr, nullptr, anna,
         R"re(.*"skill":\{.*"id":"([^"]+)".*)re", &Names::skill},
        {OP(listSkills()), "GET skills", nullptr, R"({"skills":[{"id":"s"}],"categories":["c",1]})",
         R"({"id":"s"}/)", bert, ".+/.*"},
        {OP(rateSkill(n.skill, 5)), "POST skills/s/rate", R"({"rating":5})", "", "done", bert, "done"},
        {OP(installSkill(n.chat, n.skill)), "POST chats/3/skills/s", "{}", "", "done", anna, "done"},
        // Federation, local network
        {OP(get("/api/messenger/federation/info")), nullptr, nullptr, nullptr, nullptr, anna,
         ".*\"matrix_id\":\"@anna:.*"},
        {OP(addFederationPeer("down.example", "http://127.0.0.1:1")), "POST federation/peers",
         R"({"base_url":"http://127.0.0.1:1","domain":"down.example"})", "", "done", anna, "done"},
        {OP(listFederationPeers()), "GET federation/peers", nullptr, R"({"peers":[{}]})", "{}", anna,
         R"(\{[^|]+\})"},
        {OP(pingFederationPeer("down.example")), "POST federation/peers/down.example/ping", "{}", "[]", "{}",
         anna, R"re(.*"status":"[^"].*)re"},
        {OP(discoverFederationPeer("@a:down.example")), "POST federation/peers/discover",
         R"({"domain":"@a:down.example","mx_id":"@a:down.example"})", "[]", "{}", anna,
         R"re(.*"base_url":"[^"].*)re"},
        {OP(registerP2P("192.168.7.5")), "POST p2p/register",
         R"({"device_id":"dev_1","local_ip":"192.168.7.5"})", R"({"subnet":"s"})", R"({"subnet":"s"})", anna,
         R"re(.*"subnet":"([^"]+)".*)re", &Names::subnet},
        {OP(registerP2P("192.168.7.6")), nullptr, nullptr, nullptr, nullptr, bert, ".*"},
        {OP(discoverP2P(n.subnet)), "GET p2p/discover?subnet=192.168.0", nullptr, "[]", "{}", anna,
         R"(.*"peers":\[\{.*)"},
        {OP(del("/api/messenger/p2p/register", {})), nullptr, nullptr, nullptr, nullptr, bert, ".*"},
        {OP(discoverP2P("")), "GET p2p/discover", nullptr, "[]", "{}", anna, R"(.*"peers":\[\].*)"},
        // Zero-knowledge groups
        {OP(uploadZkIdentity(jwk)), "POST zk/identity", R"({"public_key_jwk":{"kty":"EC","x":"a","y":"b"}})",
         "", "done", bert, "done"},
        {OP(fetchZkIdentity(n.peer)), "GET zk/identity/8", nullptr, R"({"public_key_jwk":{"x":"X"}})",
         R"({"x":"X"})", anna, R"(\{"kty":"EC","x":"a","y":"b"\})"},
        {OP(fetchZkIdentity(n.peer)), "GET zk/identity/8", nullptr, "{}", "badResponse"},
        {OP(createZkGroup({n.me, n.peer, "x"}, {{"nonce", "n"}}, keysOf(n))), "POST chats/zk",
         R"({"encrypted_meta":{"nonce":"n"},"participants":[7,8],"wrapped_keys":{"7":{"nonce":"1"},"8":{"nonce":"2"}}})",
         R"({"chat_id":"9"})", R"({"chat_id":"9"})", anna, R"re(.*"chat_id":"([^"]+)".*)re", &Names::zkChat},
        {OP(fetchZkSenderKey(n.zkChat)), "GET chats/9/zk/key", nullptr, R"({"wrapped_key":"none"})",
         "badResponse", bert, R"(\{"nonce":"2"\})"},
        // The account, and the end of it
        {OP(get("/api/messenger/users/me/export")), "GET users/me/export", nullptr, "raw", "raw", bert,
         R"(.*"user":\{.*)"},
        {OP(createEncryptedBackup("backup-1")), "POST users/me/backup", R"({"password":"backup-1"})",
         R"({"salt":"s"})", R"({"salt":"s"})", bert, R"re(.*"ciphertext":"[^"].*)re"},
        {OP(deleteMessage(n.message, n.me)), "DELETE messages/m", R"({"user_id":7})", "", "done", anna,
         "done"},
        {OP(deleteUserAccount("pw")), "DELETE users/me", R"({"password":"pw"})", "", "done", bert, "api 4.."},
        {OP(deleteUserAccount("secret-1")), nullptr, nullptr, nullptr, nullptr, bert, "done"},
        {OP(fetchChats()), nullptr, nullptr, nullptr, nullptr, bert, "api 401"},
    };
    return all;
}

// Somebody with this client's session and interface, known to the server under their own name.
struct User {
    User(Site &site, const QString &name)
        : person(site, name)
        , api(site.server().httpUrl().toString(), signedIn.session) {
        signedIn.session.token = person.token;
        signedIn.session.adoptDeviceId(u"device-1"_s);
    }

    Person person;
    SignedInSession signedIn;
    MessengerAPI api;
};

} // namespace

class TestOperations : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void goOutAndComeBackExactly_data() { eachRecorded(); }
    void goOutAndComeBackExactly();
    void passFailuresOn_data() { eachRecorded(); }
    void passFailuresOn();
    void chatListIsReadStrictly();
    void areDoneAtHome();
    void uploadsHaveExactBodies();
    void unreadableFilesSendNothing();

private:
    static void eachRecorded() {
        QTest::addColumn<int>("index");
        for (size_t index = 0; index < operations().size(); ++index)
            if (operations()[index].request)
                QTest::addRow("%zu %s", index, operations()[index].name) << int(index);
    }

    /// The interface over a server that answers once, at the session of user 7.
    struct Recorded {
        ScriptedHttpServer server;
        SignedInSession signedIn;
        MessengerAPI api{server.base(), signedIn.session};

        Recorded() {
            signedIn.session.adoptDeviceId(u"dev_1"_s);
            signedIn.session.adoptSyncCursor(11);
        }
    };
};

void TestOperations::goOutAndComeBackExactly() {
    QFETCH(int, index);
    const Operation &operation = operations()[size_t(index)];
    Recorded at;
    at.server.answerNext(ScriptedAnswer::of(200, operation.answer));
    QCOMPARE(operation.call(at.api, {}), QString::fromUtf8(operation.result));
    QCOMPARE(at.server.requests().size(), 1);
    const RecordedRequest sent = at.server.lastRequest();
    const QByteArray request = operation.request;
    const bool isWhole = request.startsWith('/');
    QCOMPARE(sent.method, isWhole ? "POST" : request.left(request.indexOf(' ')));
    QCOMPARE(sent.target, isWhole ? request : "/api/messenger/" + request.mid(request.indexOf(' ') + 1));
    if (!operation.body || *operation.body)
        QCOMPARE(sent.body, QByteArray(operation.body));
    QCOMPARE(sent.headers.value("authorization"), request.endsWith("files/upload") ? "" : "Bearer t0k");
    const char *key = request.endsWith("3/messages")       ? "k"
                      : request.endsWith("voice-messages") ? "key-1"
                                                           : "";
    QCOMPARE(sent.headers.value("idempotency-key"), key);
}

void TestOperations::passFailuresOn() {
    QFETCH(int, index);
    const Operation &operation = operations()[size_t(index)];
    Recorded at;
    at.server.answerNext(ScriptedAnswer::of(403, operation.answer));
    QCOMPARE(operation.call(at.api, {}), u"api 403"_s);
    at.server.answerNext(ScriptedAnswer::truncated(operation.answer));
    QCOMPARE(operation.call(at.api, {}), u"transport"_s);
    at.server.answerNext(ScriptedAnswer::of(200, "<html>"));
    const bool readsNothing = qstrcmp(operation.result, "done") == 0;
    const bool readsBytes = qstrcmp(operation.result, operation.answer) == 0 && *operation.result != '{';
    const char *unreadable = readsNothing ? "done" : readsBytes ? "<html>" : "json";
    QCOMPARE(operation.call(at.api, {}), QString::fromLatin1(unreadable));
}

void TestOperations::chatListIsReadStrictly() {
    Recorded at;
    for (const char *body : {"[]", "{}", R"({"messages":[]})", R"({"chats":[{"id":7}]})",
                             R"({"chats":[{"id":"7"},{"id":"8","unread_count":"1"}]})"}) {
        at.server.answerNext(ScriptedAnswer::of(200, body));
        const QString result = resultOf(at.api.fetchChats());
        QVERIFY2(result == "decoding", body);
    }
}

// In the order in which people would come to need them. What is compared is what the client reads.
void TestOperations::areDoneAtHome() {
    Site site;
    User users[] = {{site, u"anna"_s}, {site, u"bert"_s}};
    Person::signIn(site, u"anna"_s, u"dev_2"_s);
    Names names;
    for (const Operation &operation : operations()) {
        if (operation.caller == nobody)
            continue;
        User &caller = users[operation.caller == bert];
        names.me = QString::number(caller.person.id);
        names.peer = QString::number(users[operation.caller == anna].person.id);
        const QString result = operation.call(caller.api, names);
        const QRegularExpression pattern(
            QRegularExpression::anchoredPattern(
                QString::fromUtf8(operation.atHome).replace(u"$voice"_s, names.voice)),
            QRegularExpression::DotMatchesEverythingOption);
        const auto match = pattern.match(result);
        QVERIFY2(match.hasMatch(),
                 qPrintable(QString::fromUtf8(operation.name) + u" gave "_s + result.left(300)));
        if (operation.keptAs)
            names.*operation.keptAs = match.captured(1);
    }
}

void TestOperations::uploadsHaveExactBodies() {
    // Every byte value, a line that looks like a boundary, no line end at the end.
    QByteArray everything("--Boundary-\r\n--\r\n");
    for (int value = 0; value < 256; ++value)
        everything.append(char(value));
    const QString uuid = u"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"_s;
    const QString longBoundary = u"Boundary-"_s + uuid;
    const QByteArray chat = "--B\r\nContent-Disposition: form-data; name=\"chat_id\"\r\n\r\n3\r\n";
    const auto voice = [](MessengerAPI &api, const QUrl &file) {
        resultOf(api.sendVoiceMessage("3", file, "k"));
    };
    const auto upload = [](MessengerAPI &api, const QUrl &file) { resultOf(api.uploadFile("3", file)); };
    const auto transcript = [](MessengerAPI &api, const QUrl &file) { resultOf(api.transcribeVoice(file)); };
    const struct {
        std::function<void(MessengerAPI &, const QUrl &)> send;
        QString name;
        QByteArray content, chatField, sentName, type;
        QString boundary;
    } rows[] = {
        {voice, u"r.m4a"_s, everything, chat, "voice.m4a", "audio/mp4", longBoundary},
        {upload, u"отчёт 1.pdf"_s, everything, chat, "отчёт 1.pdf", "application/octet-stream", longBoundary},
        // An empty file with a name that breaks out.
        {upload, u"a\"\r\nX: y"_s, {}, chat, "a%22%0D%0AX: y", "application/octet-stream", longBoundary},
        {transcript, u"v.m4a"_s, everything, {}, "v.m4a", "audio/m4a", uuid},
    };
    for (const auto &row : rows) {
        const InRow named(row.sentName);
        Recorded at;
        row.send(at.api, fileNamed(row.name, row.content));
        const RecordedRequest sent = at.server.lastRequest();
        const QString type = QString::fromLatin1(sent.headers.value("content-type"));
        const QRegularExpression pattern(
            QRegularExpression::anchoredPattern(u"multipart/form-data; boundary=(%1)"_s.arg(row.boundary)));
        const QByteArray boundary = pattern.match(type).captured(1).toLatin1();
        QVERIFY2(!boundary.isEmpty(), qPrintable(type));
        QByteArray head = row.chatField +
                          "--B\r\nContent-Disposition: form-data; name=\"file\"; filename=\"" + row.sentName +
                          "\"\r\nContent-Type: " + row.type + "\r\n\r\n";
        QCOMPARE(sent.body, head.replace("--B\r\n", "--" + boundary + "\r\n") + row.content + "\r\n--" +
                                boundary + "--\r\n");
    }
}

void TestOperations::unreadableFilesSendNothing() {
    Recorded at;
    const QUrl missing = QUrl::fromLocalFile(someFile().toLocalFile() + ".missing");
    const QUrl folder = QUrl::fromLocalFile(QDir::tempPath());
    for (const QUrl &file : {missing, folder, QUrl("https://far.example/file")}) {
        for (const QString &result :
             {resultOf(at.api.sendVoiceMessage("3", file, "k")), resultOf(at.api.uploadFile("3", file)),
              resultOf(at.api.transcribeVoice(file))})
            QVERIFY2(file == missing ? result.contains("No such file") : !result.isEmpty(),
                     qPrintable(result));
    }
    QCOMPARE(at.server.requests().size(), 0);
}

ORVANE_TEST_MAIN(TestOperations)

#include "tst_operations.moc"
