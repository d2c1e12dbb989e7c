// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QDir>
#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int open = 0; // for whoever comes

// One row of the interface, as a client calls it. In path and body CHAT is a group of anna and bert, MSG
// anna's message in it, ME anna's id, OTHER bert's, CARL that of somebody who shares only the Lobby, BOT
// anna's bot, SKILL her skill, AGENT an agent of the group, FOLDER her folder.
struct Row {
    const char *method;
    const char *path;
    const char *body;
    int status;         // of anna's call
    const char *keys;   // of its answer
    int outsider = 200; // status of carl's call; 0: nobody is asked who they are
};

const Row operations[] = {
    {"GET", "chats", "", 200, "chats"},
    {"POST", "chats", R"({"user_id":ME,"type":"group","title":"G","participants":[OTHER]})", 201, "chat",
     403},
    {"POST", "channels", R"({"title":"C","user_id":ME})", 201, "channel", 403},
    {"GET", "channels?user_id=ME", "", 200, "channels", 403},
    {"GET", "saved?user_id=ME", "", 200, "chat", 403},
    {"POST", "chats/CHAT/invite", R"({"expires_hours":168})", 201, "url code", 403},
    {"POST", "chats/federated",
     R"({"title":"F","local_participants":[OTHER],"remote_participants":["@x:far.example"]})", 201, "chat",
     201},
    {"GET", "chats/CHAT/messages?limit=50", "", 200, "messages", 403},
    {"POST", "chats/CHAT/messages", R"({"user_id":ME,"content":"hi","type":"text"})", 201, "message", 403},
    {"PATCH", "messages/MSG", R"({"user_id":ME,"content":"hello @bert again"})", 200, "message", 403},
    {"POST", "chats/CHAT/messages/pin", R"({"message_id":"MSG"})", 200, "status", 403},
    {"POST", "chats/CHAT/messages/unpin", R"({"message_id":"MSG"})", 200, "status", 403},
    {"POST", "messages/MSG/reactions", R"({"emoji":"👍"})", 200, "reactions", 403},
    {"POST", "messages/MSG/star", R"({"user_id":ME})", 200, "status", 403},
    {"DELETE", "messages/MSG/star", R"({"user_id":ME})", 200, "status", 403},
    {"GET", "starred?user_id=ME", "", 200, "messages", 403},
    {"POST", "messages/MSG/translate", R"({"target_lang":"ru"})", 503, "error_code", 403},
    {"GET", "mentions?user_id=ME", "", 200, "mentions", 403},
    {"GET", "users/search?q=bert&user_id=ME", "", 200, "users", 403},
    {"GET", "search/global?q=hello&user_id=ME", "", 200, "messages", 403},
    {"POST", "search/semantic", R"({"query":"hello","user_id":ME,"chat_id":"CHAT"})", 200, "results method",
     403},
    {"GET", "folders", "", 200, "folders"},
    {"POST", "folders", R"({"name":"Work","icon":"📁"})", 201, "folder", 201},
    {"POST", "folders/FOLDER/chats", R"({"chat_id":"CHAT","action":"add"})", 200, "folder", 404},
    {"POST", "push/register", R"({"user_id":ME,"device_token":"0aff","platform":"macos"})", 200, "status",
     403},
    {"GET", "contacts?user_id=ME", "", 200, "contacts", 403},
    {"GET", "contacts/requests?user_id=ME", "", 200, "requests", 403},
    {"POST", "contacts/request", R"({"user_id":ME,"contact_id":OTHER})", 200, "status", 403},
    {"POST", "contacts/requests/CARL", R"({"user_id":ME,"action":"reject"})", 200, "status", 403},
    {"POST", "contacts/add",
     R"({"phone_hash":"0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef","display_name":"D","from_address_book":true,"organization":null,"avatar_hash":null})",
     200, "status"},
    {"POST", "keys/upload",
     R"({"user_id":ME,"identity_key":"aWQ=","signed_pre_key":"cHJl","signed_pre_key_signature":"c2ln","one_time_pre_keys":["b25l","dHdv"]})",
     200, "uploaded", 403},
    {"GET", "keys/OTHER", "", 200, "identity_key signed_pre_key signed_pre_key_signature"},
    {"GET", "keys/ME/count", "", 200, "pre_keys_remaining"},
    {"POST", "devices/register", R"({"device_id":"device-1","device_name":"N","platform":"macos"})", 200,
     "status"},
    {"GET", "devices", "", 200, "devices"},
    {"GET", "sync?since=0", "", 200, "cursor"},
    {"GET", "users/me/export", "", 200, "user chats messages"},
    {"POST", "users/me/backup", R"({"password":"backup"})", 200, "ciphertext nonce tag salt"},
    {"POST", "/api/chat", R"({"message":"hi","temperature":0.3})", 503, "error_code", open},
    {"POST", "/api/chat/smart-reply",
     R"({"messages":[{"role":"user","content":"Can you come?"}],"user_id":0})", 200, "replies method"},
    {"POST", "/api/chat/summarize", R"({"chat_id":"CHAT","period":"day","user_id":ME})", 200,
     "summary key_points decisions action_items method", 403},
    {"POST", "/api/chat/persona-reply", R"({"chat_id":"CHAT","messages":[]})", 200,
     "replies persona_samples method", 403},
    {"POST", "/api/chat/agent", R"({"message":"hello","chat_id":"CHAT","user_id":ME})", 200, "reply", 403},
    {"POST", "/api/chat/memory", R"({"query":"hello","chat_id":"CHAT"})", 200,
     "answer method sources timeline entities", 403},
    {"POST", "/api/chat/threads/discover", R"({"query":"hello"})", 200,
     "title summary related_chats messages"},
    {"GET", "chats/CHAT/agents", "", 200, "agents presets", 403},
    {"POST", "chats/CHAT/agents", R"({"role":"moderator"})", 201, "status", 403},
    {"DELETE", "chats/CHAT/agents/AGENT", "{}", 200, "status", 403},
    {"GET", "bots?user_id=0", "", 200, "bots"},
    {"GET", "bots/discover", "", 200, "bots"},
    {"POST", "bots",
     R"({"name":"Helper","description":"d","avatar_url":"","webhook_url":"builtin://echo","web_app_url":"https://app.example/","api_token":"","is_public":true,"user_id":"0"})",
     201, "bot", 201},
    {"POST", "bots/BOT/chat", "{}", 200, "chat_id", 403},
    {"GET", "bots/BOT/stats", "", 200, "messages_sent chats has_mini_app webhook_type", 403},
    {"GET", "bots/BOT/webapp-init?chat_id=CHAT", "", 200, "web_app_url", 403},
    {"POST", "miniapp/submit", R"({"bot_id":"BOT","chat_id":"CHAT","data":{"a":1}})", 200, "status", 403},
    {"GET", "skills", "", 200, "skills categories"},
    {"POST", "skills",
     R"({"name":"S","description":"d","category":"custom","icon":"✨","system_prompt":"p","triggers":[],"is_public":true})",
     201, "skill", 201},
    {"POST", "chats/CHAT/skills/SKILL", "{}", 200, "status", 403},
    {"POST", "skills/SKILL/rate", R"({"rating":5})", 200, "status"},
    {"GET", "federation/info", "", 200, "matrix_id domain outbox_pending features"},
    {"GET", "federation/peers", "", 200, "peers"},
    {"POST", "federation/peers", R"({"domain":"far.example","base_url":"https://far.example"})", 201,
     "status", 201},
    {"POST", "federation/peers/down.example/ping", "{}", 200, "status", 404},
    {"POST", "federation/peers/discover", R"({"domain":"down.example","mx_id":"down.example"})", 200,
     "base_url"},
    {"POST", "p2p/register", R"({"local_ip":"192.168.7.5","device_id":"device-1"})", 200, "subnet"},
    {"DELETE", "p2p/register", "{}", 200, "status"},
    {"GET", "p2p/discover?subnet=192.168.7.0/24", "", 200, "peers subnet"},
    {"POST", "zk/identity", R"({"public_key_jwk":{"kty":"EC","x":"a","y":"b"}})", 200, "status"},
    {"GET", "zk/identity/OTHER", "", 200, "public_key_jwk"},
    {"POST", "chats/zk",
     R"({"participants":[ME,OTHER],"encrypted_meta":{"nonce":"n"},"wrapped_keys":{"ME":{"nonce":"1"},"OTHER":{"nonce":"2"}}})",
     201, "chat_id", 400},
    {"GET", "chats/CHAT/zk/key", "", 404, "error_code", 403},
    {"DELETE", "messages/MSG", R"({"user_id":ME})", 200, "status", 403},
    {"DELETE", "devices/device-2", "{}", 200, "status", 404},
    {"DELETE", "users/me", R"({"password":"secret-1"})", 200, "status"},
};

// What is refused to anna, and leaves nothing behind; the names stand for the same as above.
struct Refused {
    const char *method;
    const char *path;
    QByteArray body = {};
    int status = 400;
    const char *error = "bad_request";
};

QList<Refused> refusals() {
    const char *up = "/api/auth/register";
    const char *in = "/api/auth/login";
    QList<Refused> rows = {
        {"POST", up, {}, 400, "bad_json"},
        {"POST", up, R"({"username":"a)", 400, "bad_json"},
        {"POST", up, "[]", 400, "bad_json"},
        {"POST", up, QByteArray(100'000, '['), 400, "bad_json"},
        {"POST", up, "{\"username\":\"\xff\xfe\",\"password\":\"secret-1\"}", 400, "bad_json"},
        {"POST", up, R"({"password":"secret-1"})"},
        {"POST", up, R"({"username":1,"password":"secret-1"})"},
        {"POST", up, R"({"username":"a"})"},
        {"POST", up, R"({"username":"a","password":""})"},
        {"POST", up, "{\"username\":\"" + QByteArray(65, 'n') + "\",\"password\":\"secret-1\"}"},
        {"POST", up, R"({"username":"  ","password":"secret-1"})"},
        {"POST", up, R"({"username":"a\nb","password":"secret-1"})"},
        {"POST", up, R"({"username":"a\u0000b","password":"secret-1"})"},
        {"POST", up, R"({"username":"a\u202eb","password":"secret-1"})"},
        {"POST", up, R"({"username":"Bot_x","password":"secret-1"})"},
        {"POST", up, R"({"username":"a","password":"secret-1","display_name":7})"},
        {"POST", up, R"({"username":"a","password":"secret-1","device_id":7})"},
        {"POST", in, R"({"username":"nobody","password":"p"})", 401, "invalid_credentials"},
        {"POST", in, R"({"username":"a","password":5})"},
        {"POST", "/api/auth/nothing", "{}", 404, "not_found"},
        {"POST", "/api/auth/..%2Flogin", "{}", 404, "not_found"},
        {"PUT", "chats", "{}", 405, "method_not_allowed"},
        {"GET", "chats/", {}, 404, "not_found"},
        {"GET", "/", {}, 404, "not_found"},
        {"GET", "/api/messenger//chats", {}, 404, "not_found"},
        {"POST", "users/me/backup", R"({"password":"12345"})"},
        {"POST", "users/me/backup", "{}"},
        {"POST", "users/me/backup", R"({"password":123456})"},
        {"DELETE", "users/me", "{}"},
        {"GET", "sync?since=soon"},
        {"POST", "chats", R"({"type":"direct","title":null,"participants":[999]})", 404, "not_found"},
        {"POST", "chats", R"({"type":"direct","title":null,"participants":[ME]})"},
        {"POST", "chats", R"({"type":"direct","title":null,"participants":[1,2]})"},
        {"POST", "chats", R"({"type":"party","title":null,"participants":[]})"},
        {"POST", "chats", R"({"type":"group","title":"G","participants":[1.5]})"},
        {"POST", "chats", R"({"type":"group","title":"G","participants":["1"]})"},
        {"POST", "chats", R"({"type":"group","title":"G"})"},
        {"POST", "chats", R"({"type":"group","title":[],"participants":[]})"},
        {"POST", "chats", R"({"user_id":1,"type":"group","title":"G","participants":[]})", 403, "forbidden"},
        {"POST", "chats", R"({"user_id":"x","type":"group","title":"G","participants":[]})"},
        {"POST", "chats/lobby/messages", R"({"type":"text"})"},
        {"POST", "chats/lobby/messages", R"({"content":"","type":"text"})"},
        {"POST", "chats/lobby/messages", R"({"content":1,"type":"text"})"},
        {"POST", "chats/lobby/messages", R"({"content":"a","type":"banana"})"},
        {"POST", "chats/lobby/messages", R"({"content":"a","zk_payload":"x"})"},
        {"POST", "chats/lobby/messages", R"({"content":"a","reply_to":4})"},
        {"POST", "chats/lobby/messages", R"({"content":"a","user_id":1})", 403, "forbidden"},
        {"POST", "chats/lobby/messages", R"({"content":"a","user_id":3.5})"},
        {"GET", "chats/CHAT/messages?limit=0"},
        {"GET", "chats/CHAT/messages?limit=x"},
        {"GET", "chats/CHAT/messages?before=unknown", {}, 404, "not_found"},
        // A message of another chat is no place to read on from, and can't be pinned there.
        {"GET", "chats/lobby/messages?before=MSG", {}, 404, "not_found"},
        {"POST", "chats/lobby/messages/pin", R"({"message_id":"MSG"})", 404, "not_found"},
        {"POST", "chats/CHAT/messages/pin", "{}"},
        {"GET", "chats/unknown/messages", {}, 404, "not_found"},
        {"PATCH", "messages/MSG", R"({"content":""})"},
        {"PATCH", "messages/MSG", R"({"content":4})"},
        {"PATCH", "messages/MSG", "{}"},
        {"POST", "messages/MSG/reactions", "{\"emoji\":\"" + QByteArray(33, 'x') + "\"}"},
        {"POST", "folders/FOLDER/chats", R"({"chat_id":"unknown","action":"add"})", 404, "not_found"},
        {"POST", "folders/FOLDER/chats", R"({"chat_id":"BERTS","action":"add"})", 403, "forbidden"},
        {"POST", "folders/FOLDER/chats", R"({"chat_id":"CHAT","action":"burn"})"},
        {"POST", "chats/DIRECT/invite", R"({"expires_hours":1})"},
        {"POST", "invites/guess", "{}", 404, "not_found"},
        {"POST", "contacts/request", R"({"contact_id":ME})"},
        {"POST", "contacts/request", R"({"contact_id":0})", 404, "not_found"},
        {"POST", "contacts/request", R"({"contact_id":"1"})"},
        {"POST", "contacts/request", R"({"contact_id":1.5})"},
        {"POST", "contacts/request", R"({"contact_id":1e300})"},
        {"POST", "contacts/requests/abc", R"({"action":"accept"})", 404, "not_found"},
        {"POST", "contacts/requests/OTHER", R"({"action":"accept"})", 404, "not_found"},
        {"POST", "contacts/requests/CARL", R"({"action":"perhaps"})"},
        {"POST", "contacts/add", R"({"phone_hash":"+79001234567","display_name":"D"})"},
        {"POST", "contacts/add",
         "{\"phone_hash\":\"" + QByteArray(64, 'a') + "\",\"display_name\":\"D\",\"from_address_book\":1}"},
        {"GET", "zk/identity/CARL", {}, 404, "not_found"},
        {"GET", "keys/CARL", {}, 404, "not_found"},
    };
    for (const char *hours : {"0", "-1", "1e9", "\"1\"", "1.5"})
        rows.append({"POST", "chats/CHAT/invite", R"({"expires_hours":)" + QByteArray(hours) + '}'});
    for (const char *rating : {"0", "6", "4.5", "\"5\""})
        rows.append({"POST", "skills/SKILL/rate", R"({"rating":)" + QByteArray(rating) + '}'});
    for (const char *remote :
         {"[]", R"(["x:far.example"])", R"(["@:far.example"])", R"(["@x"])", R"(["@x:"])", "[7]", "7"})
        rows.append(
            {"POST", "chats/federated",
             R"({"title":"F","local_participants":[],"remote_participants":)" + QByteArray(remote) + '}'});
    for (const QByteArray &identity : {QByteArray("\"a*b\""), QByteArray("\"\""), QByteArray("7"),
                                       QByteArray("\"" + QByteArray(2000, 'A') + "\"")})
        rows.append(
            {"POST", "keys/upload",
             R"({"signed_pre_key":"cHJl","signed_pre_key_signature":"c2ln","one_time_pre_keys":[],"identity_key":)" +
                 identity + '}'});
    for (const QByteArray &keys : {QByteArray(R"(["MQ==","-"])"), QByteArray("[1]"),
                                   QByteArray("[" + QByteArray("\"MQ==\",").repeated(1001) + "\"MQ==\"]")})
        rows.append(
            {"POST", "keys/upload",
             R"({"signed_pre_key":"cHJl","signed_pre_key_signature":"c2ln","identity_key":"aWQ=","one_time_pre_keys":)" +
                 keys + '}'});
    for (const char *address :
         {"172.15.0.1", "172.32.0.1", "8.8.8.8", "127.0.0.1", "10.999.1.1", "10.1", "::1", "host", ""})
        rows.append({"POST", "p2p/register", "{\"local_ip\":\"" + QByteArray(address) + "\"}"});
    for (const char *bot :
         {R"({"name":""})", R"({"name":"B","web_app_url":"javascript:alert"})",
          R"({"name":"B","web_app_url":"file:///etc/passwd"})",
          R"({"name":"B","web_app_url":"builtin://echo"})", R"({"name":"B","webhook_url":"builtin://shell"})",
          R"({"name":"B","webhook_url":"https://"})", R"({"name":"B","is_public":"yes"})"})
        rows.append({"POST", "bots", bot});
    for (const auto &[domain, url] : {std::pair("", "https://a.example"),
                                      {"a b", "https://a.example"},
                                      {"a.example/../x", "https://a.example"},
                                      {"@x", "https://a.example"},
                                      {"a.example", "file:///etc/passwd"},
                                      {"a.example", "https:///x"},
                                      {"a.example", "a.example"}})
        rows.append({"POST", "federation/peers",
                     "{\"domain\":\"" + QByteArray(domain) + "\",\"base_url\":\"" + url + "\"}"});
    rows.append({"POST", "federation/peers/unknown.example/ping", "{}", 404, "not_found"});
    for (const QByteArray &messages :
         {QByteArray("7"), QByteArray("{}"), QByteArray("[7]"),
          QByteArray(R"([{"role":"user","content":7}])"), QByteArray(R"([{"content":"x"}])"),
          QByteArray(R"([{"role":"system","content":"x"}])"), QByteArray("null"),
          "[" + QByteArray(R"({"role":"user","content":"x"},)").repeated(200) +
              R"({"role":"user","content":"x"}])"})
        rows.append({"POST", "/api/chat/smart-reply", R"({"messages":)" + messages + '}'});
    return rows;
}

// At the edge of what is refused.
const Refused accepted[] = {
    {"POST", "/api/auth/register", R"({"username":"Жанна д\u0027Арк 😀","password":"secret-1"})", 201},
    {"POST", "chats", R"({"type":"group","title":"G","participants":[]})", 201},
    {"POST", "chats", R"({"type":"group","title":null,"participants":[0]})", 201},
    {"POST", "chats", R"({"type":"direct","title":null,"participants":[1]})", 201},
    {"POST", "chats", R"({"user_id":"0","type":"group","title":"G","participants":[]})", 201},
    {"POST", "chats/lobby/messages", R"({"content":"a\u0000b"})", 201},
    {"POST", "chats/lobby/messages", R"({"content":"a\ud800b"})", 201},
    {"POST", "p2p/register", R"({"local_ip":"10.1.2.3"})", 200},
    {"POST", "p2p/register", R"({"local_ip":"172.16.0.1"})", 200},
    {"POST", "p2p/register", R"({"local_ip":"172.31.255.1"})", 200},
    {"POST", "p2p/register", R"({"local_ip":"192.168.0.1"})", 200},
};

} // namespace

class OperationsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        Person::signIn(m_company.site, u"anna"_s, u"device-2"_s);
        Person &bert = m_company.bert;
        bert.post(u"keys/upload"_s, {{"identity_key"_L1, "aWQ="_L1},
                                     {"signed_pre_key"_L1, "cHJl"_L1},
                                     {"signed_pre_key_signature"_L1, "c2ln"_L1},
                                     {"one_time_pre_keys"_L1, QJsonArray()}});
        bert.post(u"zk/identity"_s, {{"public_key_jwk"_L1, QJsonObject{{"kty"_L1, "EC"_L1}}}});
        m_company.carl.post(u"contacts/request"_s, {{"contact_id"_L1, m_anna.id}});
        m_anna.post(u"federation/peers"_s,
                    {{"domain"_L1, "down.example"_L1}, {"base_url"_L1, "http://127.0.0.1:1"_L1}});
        m_anna.post(u"chats/%1/agents"_s.arg(m_company.chat), {{"role"_L1, "scribe"_L1}});
        const QJsonObject privateBot{
            {"name"_L1, "Mine"_L1}, {"web_app_url"_L1, "https://app.example/"_L1}, {"is_public"_L1, false}};
        const QJsonObject skill{
            {"name"_L1, "S"_L1}, {"system_prompt"_L1, "p"_L1}, {"triggers"_L1, QJsonArray()}};
        m_names = {{"CHAT", m_company.chat},
                   {"MSG", m_anna.say(m_company.chat, u"hello @bert"_s)},
                   {"ME", QString::number(m_anna.id)},
                   {"OTHER", QString::number(bert.id)},
                   {"CARL", QString::number(m_company.carl.id)},
                   {"DIRECT", m_anna.directChatWith(bert)},
                   {"BERTS", bert.groupWith({})},
                   {"BOT", m_anna.post(u"bots"_s, privateBot).text("bot.id")},
                   {"SKILL", m_anna.post(u"skills"_s, skill).text("skill.id")},
                   {"AGENT", m_anna.get(u"chats/%1/agents"_s.arg(m_company.chat)).text("agents.0.id")},
                   {"FOLDER", m_anna.post(u"folders"_s, {{"name"_L1, "F"_L1}}).text("folder.id")}};
        for (const auto &[name, value] : m_names)
            QVERIFY2(!value.isEmpty(), name);
    }

    void refusals() {
        const QByteArray before = everything();
        QStringList wrong;
        for (const Refused &row : ::refusals()) {
            const Reply reply = m_anna.send(row.method, filled(row.path),
                                            row.body.isValidUtf8() ? filled(row.body).toUtf8() : row.body);
            if (reply.status != row.status || reply.error() != QLatin1StringView(row.error))
                wrong.append(u"%1 %2: %3"_s.arg(row.path, QString::fromUtf8(row.body.left(100)),
                                                QString::fromUtf8(reply.body)));
        }
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
        QCOMPARE(everything(), before);
        for (const Refused &row : accepted)
            QVERIFY2(m_anna.send(row.method, filled(row.path), row.body).status == row.status, row.body);
        QCOMPARE(m_anna.messages(lobby()).size(), 2);
    }

    void rows() {
        for (const Row &row : operations) {
            const QByteArray wrong = wrongWith(row);
            QVERIFY2(wrong.isEmpty(), qPrintable(u"%1 %2: %3"_s.arg(row.method, row.path, wrong)));
        }
    }

private:
    QString filled(const QByteArray &text) const {
        QString result = QString::fromUtf8(text);
        for (const auto &[name, value] : m_names)
            result.replace(QLatin1StringView(name), value);
        return result;
    }

    // All that anna can see of the server.
    QByteArray everything() {
        QByteArray all;
        for (const char *path :
             {"users/me/export", "federation/peers", "bots", "skills", "folders", "keys/ME/count", "contacts",
              "contacts/requests", "p2p/discover", "starred", "chats/lobby/messages"})
            all += m_anna.get(filled(path)).body + '\n';
        all += m_company.bert.get(filled("keys/ME")).body;
        return all +
               QDir(m_company.site.dataFolder() + u"/files"_s).entryList(QDir::Files).join(u' ').toUtf8();
    }

    // Strangers first, since the good call may leave nothing to refuse them.
    QByteArray wrongWith(const Row &row) {
        const QString path = filled(row.path);
        const QByteArray body = filled(row.body).toUtf8();
        const QByteArray method = row.method;
        if (row.outsider != open) {
            for (const char *authorization : {"", "Bearer", "Bearer wrong", "Basic YTpi"}) {
                const Reply reply =
                    m_company.site.send(method, path, body, {{"Authorization", authorization}});
                if (reply.status != 401 || reply.error() != "unauthorized"_L1)
                    return "a stranger gets " + reply.body;
            }
            if (path != "users/me"_L1) {
                const Reply reply = m_company.carl.send(method, path, body);
                if (reply.status != row.outsider)
                    return "an outsider gets " + reply.body;
            }
        }
        if (!body.isEmpty())
            for (const char *bad : {"[]", "{", "7", "\"x\""})
                if (const Reply reply = m_anna.send(method, path, bad); reply.error() != "bad_json"_L1)
                    return bad + (" gets " + reply.body);
        const Reply reply = m_anna.send(method, path, body);
        if (reply.status != row.status)
            return reply.body;
        for (const QString &key : QString::fromLatin1(row.keys).split(u' '))
            if (!reply.json.contains(key))
                return key.toUtf8() + " is missing";
        return {};
    }

    Company m_company;
    Person &m_anna = m_company.anna;
    QList<std::pair<const char *, QString>> m_names;
};

QTEST_GUILESS_MAIN(OperationsTest)
#include "tst_homeserver_operations.moc"
