// SPDX-License-Identifier: MIT
#include "Client.h"

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

const Row rows[] = {
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
    {"POST", "federation/peers/down.example/ping", "{}", 200, "status"},
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

} // namespace

class OperationsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void rows_data();
    void rows();
    void unknownMethodsAndPaths();

private:
    QString filled(const char *text) const;

    std::unique_ptr<Site> m_site;
    std::unique_ptr<Person> m_anna;
    std::unique_ptr<Person> m_bert;
    std::unique_ptr<Person> m_carl;
    QList<std::pair<QString, QString>> m_names;
};

void OperationsTest::initTestCase() {
    m_site = std::make_unique<Site>();
    m_anna = std::make_unique<Person>(*m_site, u"anna"_s);
    m_bert = std::make_unique<Person>(*m_site, u"bert"_s);
    m_carl = std::make_unique<Person>(*m_site, u"carl"_s);
    Person::signIn(*m_site, u"anna"_s, u"device-2"_s);

    const QString chat = m_anna->groupWith({m_bert->id});
    m_anna->post(u"chats/%1/agents"_s.arg(chat), {{"role"_L1, "scribe"_L1}});
    m_bert->post(u"keys/upload"_s, {{"identity_key"_L1, "aWQ="_L1},
                                    {"signed_pre_key"_L1, "cHJl"_L1},
                                    {"signed_pre_key_signature"_L1, "c2ln"_L1},
                                    {"one_time_pre_keys"_L1, QJsonArray()}});
    m_bert->post(u"zk/identity"_s, {{"public_key_jwk"_L1, QJsonObject{{"kty"_L1, "EC"_L1}}}});
    m_carl->post(u"contacts/request"_s, {{"contact_id"_L1, m_anna->id}});
    m_anna->post(u"federation/peers"_s,
                 {{"domain"_L1, "down.example"_L1}, {"base_url"_L1, "http://127.0.0.1:1"_L1}});
    const QJsonObject privateBot{
        {"name"_L1, "Mine"_L1}, {"web_app_url"_L1, "https://app.example/"_L1}, {"is_public"_L1, false}};
    m_names = {
        {u"CHAT"_s, chat},
        {u"MSG"_s, m_anna->say(chat, u"hello @bert"_s)},
        {u"ME"_s, QString::number(m_anna->id)},
        {u"OTHER"_s, QString::number(m_bert->id)},
        {u"CARL"_s, QString::number(m_carl->id)},
        {u"BOT"_s, m_anna->post(u"bots"_s, privateBot).json["bot"_L1]["id"_L1].toString()},
        {u"SKILL"_s,
         m_anna
             ->post(u"skills"_s,
                    {{"name"_L1, "S"_L1}, {"system_prompt"_L1, "p"_L1}, {"triggers"_L1, QJsonArray()}})
             .json["skill"_L1]["id"_L1]
             .toString()},
        {u"AGENT"_s, m_anna->get(u"chats/%1/agents"_s.arg(chat)).json["agents"_L1][0]["id"_L1].toString()},
        {u"FOLDER"_s,
         m_anna->post(u"folders"_s, {{"name"_L1, "F"_L1}}).json["folder"_L1]["id"_L1].toString()}};
    for (const auto &[name, value] : m_names)
        QVERIFY2(!value.isEmpty(), qPrintable(name));
}

QString OperationsTest::filled(const char *text) const {
    QString result = QString::fromUtf8(text);
    for (const auto &[name, value] : m_names)
        result.replace(name, value);
    return result;
}

void OperationsTest::rows_data() {
    QTest::addColumn<int>("index");
    for (int i = 0; i < static_cast<int>(std::size(::rows)); ++i)
        QTest::addRow("%s %s", ::rows[i].method, ::rows[i].path) << i;
}

// Strangers first, since the good call may leave nothing to refuse them.
void OperationsTest::rows() {
    QFETCH(int, index);
    const Row &row = ::rows[index];
    const QString path = filled(row.path);
    const QByteArray body = filled(row.body).toUtf8();
    const QByteArray method = row.method;

    if (row.outsider != open) {
        for (const char *authorization : {"", "Bearer", "Bearer wrong", "Basic YTpi"}) {
            const Reply reply = m_site->send(method, path, body, {{"Authorization", authorization}});
            QCOMPARE(reply.status, 401);
            QCOMPARE(reply.error(), u"unauthorized"_s);
        }
        if (!QByteArrayList{"users/me"}.contains(row.path) || method != "DELETE") {
            const Reply reply = m_carl->send(method, path, body);
            QVERIFY2(reply.status == row.outsider, reply.body.constData());
        }
    }
    if (!body.isEmpty())
        for (const char *bad : {"[]", "{", "7", "\"x\""})
            QCOMPARE(m_anna->send(method, path, bad).error(), u"bad_json"_s);

    const Reply reply = m_anna->send(method, path, body);
    QVERIFY2(reply.status == row.status, reply.body.constData());
    for (const QString &key : QString::fromLatin1(row.keys).split(u' '))
        QVERIFY2(reply.json.contains(key), qPrintable(key));
}

void OperationsTest::unknownMethodsAndPaths() {
    QCOMPARE(m_bert->send("PUT", u"chats"_s, "{}").error(), u"method_not_allowed"_s);
    QCOMPARE(m_bert->send("GET", u"chats/"_s).error(), u"not_found"_s);
    QCOMPARE(m_bert->send("GET", u"/"_s).error(), u"not_found"_s);
    QCOMPARE(m_bert->send("GET", u"/api/messenger//chats"_s).error(), u"not_found"_s);
}

QTEST_GUILESS_MAIN(OperationsTest)
#include "tst_homeserver_operations.moc"
