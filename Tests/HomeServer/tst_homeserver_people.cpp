// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

class PeopleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void requestIsAccepted();
    void requestIsRejected();
    void mutualRequestsMeet();
    void badRequests_data();
    void badRequests();
    void oneTimeKeysAreHandedOutOnce();
    void badKeys_data();
    void badKeys();
    void zkKeysAreForMembers();
    void revokedDeviceDies();
    void presenceAges();
    void presenceNeedsAPrivateAddress_data();
    void presenceNeedsAPrivateAddress();
    void signalsArePassedOn_data();
    void signalsArePassedOn();
    void ownBotAnswers();
    void badBots_data();
    void badBots();
    void skillsAreRated();
};

void PeopleTest::requestIsAccepted() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    Listener annas(site, anna);
    Listener berts(site, bert);
    annas.has({});
    annas.events.clear();
    berts.events.clear();
    QCOMPARE(anna.post(u"contacts/request"_s, {{"contact_id"_L1, bert.id}}).json["status"_L1],
             QJsonValue("pending"_L1));
    const QJsonObject request = bert.get(u"contacts/requests"_s).json["requests"_L1][0].toObject();
    QCOMPARE(request["id"_L1], QJsonValue(QString::number(anna.id)));
    QCOMPARE(request["username"_L1], QJsonValue("anna"_L1));

    const QString path = u"contacts/requests/%1"_s.arg(anna.id);
    QCOMPARE(bert.post(path, {{"action"_L1, "perhaps"_L1}}).status, 400);
    QCOMPARE(anna.post(u"contacts/requests/%1"_s.arg(bert.id), {{"action"_L1, "accept"_L1}}).status, 404);
    QCOMPARE(bert.post(path, {{"action"_L1, "accept"_L1}}).json["status"_L1], QJsonValue("accepted"_L1));
    QCOMPARE(annas.next(u"user_status"_s)["user_id"_L1], QJsonValue(QString::number(bert.id)));
    QCOMPARE(berts.next(u"user_status"_s)["user_id"_L1], QJsonValue(QString::number(anna.id)));
    QCOMPARE(anna.get(u"chats"_s).json["chats"_L1].toArray().size(), 4);
    QVERIFY(bert.get(u"contacts/requests"_s).json["requests"_L1].toArray().isEmpty());
    QCOMPARE(bert.post(path, {{"action"_L1, "accept"_L1}}).status, 404);
    QCOMPARE(anna.post(u"contacts/request"_s, {{"contact_id"_L1, bert.id}}).json["status"_L1],
             QJsonValue("accepted"_L1));
}

void PeopleTest::requestIsRejected() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    anna.post(u"contacts/request"_s, {{"contact_id"_L1, bert.id}});
    QCOMPARE(
        bert.post(u"contacts/requests/%1"_s.arg(anna.id), {{"action"_L1, "reject"_L1}}).json["status"_L1],
        QJsonValue("rejected"_L1));
    QVERIFY(bert.get(u"contacts/requests"_s).json["requests"_L1].toArray().isEmpty());
    QCOMPARE(anna.get(u"chats"_s).json["chats"_L1].toArray().size(), 3);
}

void PeopleTest::mutualRequestsMeet() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    anna.post(u"contacts/request"_s, {{"contact_id"_L1, bert.id}});
    QCOMPARE(bert.post(u"contacts/request"_s, {{"contact_id"_L1, anna.id}}).json["status"_L1],
             QJsonValue("accepted"_L1));
    QVERIFY(anna.get(u"contacts/requests"_s).json["requests"_L1].toArray().isEmpty());
}

void PeopleTest::badRequests_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("to oneself") << u"contacts/request"_s << QByteArray(R"({"contact_id":3})") << 400;
    QTest::newRow("to nobody") << u"contacts/request"_s << QByteArray(R"({"contact_id":0})") << 404;
    QTest::newRow("to a text") << u"contacts/request"_s << QByteArray(R"({"contact_id":"1"})") << 400;
    QTest::newRow("to half a person") << u"contacts/request"_s << QByteArray(R"({"contact_id":1.5})") << 400;
    QTest::newRow("to a huge number")
        << u"contacts/request"_s << QByteArray(R"({"contact_id":1e300})") << 400;
    QTest::newRow("answer to nobody")
        << u"contacts/requests/abc"_s << QByteArray(R"({"action":"accept"})") << 404;
    QTest::newRow("a phone number in the clear")
        << u"contacts/add"_s << QByteArray(R"({"phone_hash":"+79001234567","display_name":"D"})") << 400;
    QTest::newRow("flag of another type") << u"contacts/add"_s
                                          << QByteArray(R"({"phone_hash":")" + QByteArray(64, 'a') +
                                                        R"(","display_name":"D","from_address_book":1})")
                                          << 400;
}

void PeopleTest::badRequests() {
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    Site site;
    Person anna(site, u"anna"_s);
    QCOMPARE(anna.id, 3);
    QCOMPARE(anna.send("POST", path, body).status, status);
}

void PeopleTest::oneTimeKeysAreHandedOutOnce() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QString path = u"keys/%1"_s.arg(anna.id);
    QCOMPARE(bert.get(path).status, 404);
    const auto upload = [&](const QStringList &keys) {
        return anna
            .post(u"keys/upload"_s, {{"identity_key"_L1, "aWQ="_L1},
                                     {"signed_pre_key"_L1, "cHJl"_L1},
                                     {"signed_pre_key_signature"_L1, "c2ln"_L1},
                                     {"one_time_pre_keys"_L1, QJsonArray::fromStringList(keys)}})
            .json["uploaded"_L1]
            .toInt();
    };
    QCOMPARE(upload({u"MQ=="_s, u"Mg=="_s}), 2);
    QSet<QString> seen;
    for (int i = 0; i < 2; ++i)
        seen.insert(bert.get(path).json["one_time_pre_key"_L1].toString());
    QCOMPARE(seen, (QSet<QString>{u"MQ=="_s, u"Mg=="_s}));
    QVERIFY(!bert.get(path).json.contains("one_time_pre_key"_L1));
    QCOMPARE(bert.get(path).json["identity_key"_L1], QJsonValue("aWQ="_L1));
    QCOMPARE(anna.get(path + u"/count"_s).json["pre_keys_remaining"_L1], QJsonValue(0));
    // The later upload wins as a whole.
    QCOMPARE(upload({u"Mw=="_s, u"NA=="_s}), 2);
    QCOMPARE(upload({u"NQ=="_s}), 1);
    QCOMPARE(bert.get(path).json["one_time_pre_key"_L1], QJsonValue("NQ=="_L1));
}

void PeopleTest::badKeys_data() {
    QTest::addColumn<QByteArray>("identity");
    QTest::addColumn<QByteArray>("oneTime");
    QTest::newRow("no base64") << QByteArray(R"("a*b")") << QByteArray("[]");
    QTest::newRow("empty") << QByteArray(R"("")") << QByteArray("[]");
    QTest::newRow("a number") << QByteArray("7") << QByteArray("[]");
    QTest::newRow("too long") << QByteArray("\"" + QByteArray(2000, 'A') + "\"") << QByteArray("[]");
    QTest::newRow("one bad of several") << QByteArray(R"("aWQ=")") << QByteArray(R"(["MQ==","-"])");
    QTest::newRow("numbers") << QByteArray(R"("aWQ=")") << QByteArray("[1]");
    QTest::newRow("too many") << QByteArray(R"("aWQ=")")
                              << QByteArray("[" + QByteArray(R"("MQ==",)").repeated(1001) + R"("MQ=="])");
}

void PeopleTest::badKeys() {
    QFETCH(QByteArray, identity);
    QFETCH(QByteArray, oneTime);
    Site site;
    Person anna(site, u"anna"_s);
    const QByteArray body = R"({"signed_pre_key":"cHJl","signed_pre_key_signature":"c2ln","identity_key":)" +
                            identity + R"(,"one_time_pre_keys":)" + oneTime + "}";
    QCOMPARE(anna.send("POST", u"keys/upload"_s, body).status, 400);
    QCOMPARE(anna.get(u"keys/%1"_s.arg(anna.id)).status, 404); // nothing of it stays
}

void PeopleTest::zkKeysAreForMembers() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    Person carl(site, u"carl"_s);
    QJsonObject keys;
    for (const Person *person : {&anna, &bert})
        keys[QString::number(person->id)] = QJsonObject{{"nonce"_L1, u"for-%1"_s.arg(person->id)}};
    QJsonObject body{{"participants"_L1, QJsonArray{anna.id, bert.id}},
                     {"encrypted_meta"_L1, QJsonObject{{"nonce"_L1, "m"_L1}}},
                     {"wrapped_keys"_L1, keys}};
    const QString chat = anna.post(u"chats/zk"_s, body).json["chat_id"_L1].toString();
    QCOMPARE(bert.chat(chat)["zk_mode"_L1], QJsonValue(true));
    QCOMPARE(bert.get(u"chats/%1/zk/key"_s.arg(chat)).json["wrapped_key"_L1]["nonce"_L1],
             QJsonValue(u"for-%1"_s.arg(bert.id)));
    QCOMPARE(carl.get(u"chats/%1/zk/key"_s.arg(chat)).status, 403);
    // Somebody left without a key: no group at all.
    body["participants"_L1] = QJsonArray{bert.id, carl.id};
    QCOMPARE(anna.post(u"chats/zk"_s, body).status, 400);
    QCOMPARE(carl.get(u"chats"_s).json["chats"_L1].toArray().size(), 3);
    QCOMPARE(anna.get(u"zk/identity/%1"_s.arg(bert.id)).status, 404);
}

void PeopleTest::revokedDeviceDies() {
    Site site;
    Person laptop(site, u"anna"_s, u"laptop"_s);
    Person phone = Person::signIn(site, u"anna"_s, u"phone"_s);
    Person bert(site, u"bert"_s, u"phone"_s); // a namesake of the device
    Listener phones(site, phone);
    Listener berts(site, bert);
    QCOMPARE(laptop.send("DELETE", u"devices/phone"_s, "{}").status, 200);
    QTRY_VERIFY(!phones.isOpen());
    QCOMPARE(phone.get(u"chats"_s).error(), u"unauthorized"_s);
    QVERIFY(berts.isOpen());
    QCOMPARE(bert.get(u"chats"_s).status, 200);
    QCOMPARE(laptop.get(u"devices"_s).json["devices"_L1].toArray().size(), 1);
    // A device cannot register under another's name.
    laptop.post(u"devices/register"_s,
                {{"device_id"_L1, "phone"_L1}, {"device_name"_L1, "L"_L1}, {"platform"_L1, "macos"_L1}});
    QCOMPARE(laptop.get(u"devices"_s).json["devices"_L1][0]["id"_L1], QJsonValue("laptop"_L1));
    QCOMPARE(laptop.get(u"devices"_s).json["devices"_L1][0]["device_name"_L1], QJsonValue("L"_L1));
}

void PeopleTest::presenceAges() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    Person carl(site, u"carl"_s);
    const auto peers = [&](const QString &query) {
        return anna.get(u"p2p/discover"_s + query).json["peers"_L1].toArray();
    };
    QCOMPARE(anna.post(u"p2p/register"_s, {{"local_ip"_L1, "192.168.1.9"_L1}}).json["subnet"_L1],
             QJsonValue("192.168.1.0/24"_L1));
    bert.post(u"p2p/register"_s, {{"local_ip"_L1, "192.168.1.7"_L1}});
    carl.post(u"p2p/register"_s, {{"local_ip"_L1, "10.0.0.7"_L1}});
    const Listener berts(site, bert);
    const QJsonArray near = peers(u"?subnet=192.168.1.0/24"_s);
    QCOMPARE(near.size(), 1); // not oneself, and not another network
    QCOMPARE(near[0]["user_id"_L1], QJsonValue(QString::number(bert.id)));
    QCOMPARE(near[0]["local_ip"_L1], QJsonValue("192.168.1.7"_L1));
    QCOMPARE(near[0]["online"_L1], QJsonValue(true));
    QCOMPARE(peers({}).size(), 2);
    QCOMPARE(anna.get(u"p2p/discover"_s).json["subnet"_L1], QJsonValue("192.168.1.0/24"_L1));

    site.now += 100;
    carl.post(u"p2p/register"_s, {{"local_ip"_L1, "10.0.0.8"_L1}});
    site.now += 21;
    QCOMPARE(peers({}).size(), 1);
    QCOMPARE(peers({})[0]["local_ip"_L1], QJsonValue("10.0.0.8"_L1));
    carl.send("DELETE", u"p2p/register"_s, "{}");
    QVERIFY(peers({}).isEmpty());
}

void PeopleTest::presenceNeedsAPrivateAddress_data() {
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("status");
    for (const auto &[address, status] : {std::pair("10.1.2.3", 200),
                                          {"172.16.0.1", 200},
                                          {"172.31.255.1", 200},
                                          {"192.168.0.1", 200},
                                          {"172.15.0.1", 400},
                                          {"172.32.0.1", 400},
                                          {"8.8.8.8", 400},
                                          {"127.0.0.1", 400},
                                          {"10.999.1.1", 400},
                                          {"10.1", 400},
                                          {"::1", 400},
                                          {"host", 400},
                                          {"", 400}})
        QTest::newRow(*address ? address : "empty") << QString::fromLatin1(address) << status;
}

void PeopleTest::presenceNeedsAPrivateAddress() {
    QFETCH(QString, address);
    QFETCH(int, status);
    Site site;
    Person anna(site, u"anna"_s);
    QCOMPARE(anna.post(u"p2p/register"_s, {{"local_ip"_L1, address}}).status, status);
}

void PeopleTest::signalsArePassedOn_data() {
    QTest::addColumn<QString>("type");
    for (const char *type : {"call_offer", "call_answer", "call_hangup", "ice_candidate", "p2p_signal"})
        QTest::newRow(type) << QString::fromLatin1(type);
}

void PeopleTest::signalsArePassedOn() {
    QFETCH(QString, type);
    Site site;
    const Person anna(site, u"anna"_s);
    const Person annasPhone = Person::signIn(site, u"anna"_s, u"phone"_s);
    const Person bert(site, u"bert"_s);
    Listener annas(site, anna);
    Listener phones(site, annasPhone);
    Listener berts(site, bert);
    annas.send({{"type"_L1, type},
                {"to"_L1, QString::number(bert.id)},
                {"from"_L1, "1"_L1},
                {"sdp"_L1, "S"_L1},
                {"chat_id"_L1, lobby()}});
    const QJsonObject signal = berts.next(type);
    QCOMPARE(signal["from"_L1], QJsonValue(QString::number(anna.id))); // whatever the sender claims
    QCOMPARE(signal["sdp"_L1], QJsonValue("S"_L1));
    QVERIFY(!signal.contains("to"_L1));
    QVERIFY(!annas.has(type));
    QVERIFY(!phones.has(type));
    // To oneself: the other devices.
    annas.send({{"type"_L1, type}, {"to"_L1, QString::number(anna.id)}});
    QVERIFY(!phones.next(type).isEmpty());
    for (const QJsonValue &nobody :
         {QJsonValue("999"_L1), QJsonValue("x"_L1), QJsonValue(), QJsonValue(true)})
        annas.send({{"type"_L1, type}, {"to"_L1, nobody}});
    QVERIFY(!annas.has(type));
    QVERIFY(!berts.has(type));
}

void PeopleTest::ownBotAnswers() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const auto create = [&](const QJsonObject &more) {
        QJsonObject body{
            {"name"_L1, "My Helper!"_L1}, {"webhook_url"_L1, "builtin://echo"_L1}, {"user_id"_L1, "0"_L1}};
        for (auto field = more.begin(); field != more.end(); ++field)
            body[field.key()] = field.value();
        return anna.post(u"bots"_s, body).json["bot"_L1].toObject();
    };
    const QJsonObject first = create({{"is_public"_L1, true}});
    const QJsonObject second = create({{"webhook_url"_L1, ""_L1}});
    QCOMPARE(first["username"_L1], QJsonValue("bot_my_helper"_L1));
    QVERIFY(second["username"_L1] != first["username"_L1]);
    QCOMPARE(anna.get(u"bots?user_id=0"_s).json["bots"_L1].toArray().size(), 2);
    QCOMPARE(bert.get(u"bots?user_id=0"_s).json["bots"_L1].toArray().size(), 0);
    QCOMPARE(bert.get(u"bots/discover"_s).json["bots"_L1].toArray().size(), 2); // with the built-in one

    const QString path = u"bots/%1"_s.arg(first["id"_L1].toString());
    const QString chat = bert.post(path + u"/chat"_s).json["chat_id"_L1].toString();
    Listener berts(site, bert);
    bert.say(chat, u"echo?"_s);
    QCOMPARE(berts.next(u"messenger_message"_s)["message"_L1]["content"_L1], QJsonValue("echo?"_L1));
    const QJsonObject stats = bert.get(path + u"/stats"_s).json;
    QCOMPARE(stats["messages_sent"_L1], QJsonValue(1));
    QCOMPARE(stats["webhook_type"_L1], QJsonValue("builtin"_L1));
    QCOMPARE(stats["has_mini_app"_L1], QJsonValue(false));
    QCOMPARE(bert.get(path + u"/webapp-init?chat_id="_s + chat).status, 404);
    // One without a voice stays silent.
    const QString mute =
        anna.post(u"bots/%1/chat"_s.arg(second["id"_L1].toString())).json["chat_id"_L1].toString();
    Listener annas(site, anna);
    anna.say(mute, u"hello?"_s);
    QVERIFY(!annas.has(u"typing"_s));
}

void PeopleTest::badBots_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("no name") << QByteArray(R"({"name":""})");
    QTest::newRow("script address") << QByteArray(R"({"name":"B","web_app_url":"javascript:alert"})");
    QTest::newRow("file address") << QByteArray(R"({"name":"B","web_app_url":"file:///etc/passwd"})");
    QTest::newRow("built-in as mini app") << QByteArray(R"({"name":"B","web_app_url":"builtin://echo"})");
    QTest::newRow("unknown built-in") << QByteArray(R"({"name":"B","webhook_url":"builtin://shell"})");
    QTest::newRow("no host") << QByteArray(R"({"name":"B","webhook_url":"https://"})");
    QTest::newRow("flag of another type") << QByteArray(R"({"name":"B","is_public":"yes"})");
}

void PeopleTest::badBots() {
    QFETCH(QByteArray, body);
    Site site;
    Person anna(site, u"anna"_s);
    QCOMPARE(anna.send("POST", u"bots"_s, body).status, 400);
    QVERIFY(anna.get(u"bots"_s).json["bots"_L1].toArray().isEmpty());
}

void PeopleTest::skillsAreRated() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const auto publish = [&](const QJsonValue &slug) {
        return anna.post(u"skills"_s, {{"name"_L1, u"Краткий пересказ"_s},
                                       {"system_prompt"_L1, "p"_L1},
                                       {"category"_L1, "text"_L1},
                                       {"slug"_L1, slug},
                                       {"triggers"_L1, QJsonArray()}});
    };
    const QJsonObject skill = publish({}).json["skill"_L1].toObject();
    QCOMPARE(skill["slug"_L1], QJsonValue(u"краткий_пересказ"_s));
    QVERIFY(publish({}).json["skill"_L1]["slug"_L1] != skill["slug"_L1]);
    QCOMPARE(publish(skill["slug"_L1]).error(), u"slug_taken"_s);
    const QString path = u"skills/%1/rate"_s.arg(skill["id"_L1].toString());
    anna.post(path, {{"rating"_L1, 5}});
    bert.post(path, {{"rating"_L1, 1}});
    bert.post(path, {{"rating"_L1, 2}}); // thinks again
    for (const QJsonValue &bad : {QJsonValue(0), QJsonValue(6), QJsonValue(4.5), QJsonValue("5"_L1)})
        QCOMPARE(bert.post(path, {{"rating"_L1, bad}}).status, 400);
    for (int i = 0; i < 2; ++i)
        bert.post(u"chats/lobby/skills/"_s + skill["id"_L1].toString());
    const QJsonObject listed = bert.get(u"skills"_s).json;
    QCOMPARE(listed["categories"_L1].toArray(), QJsonArray{"text"_L1});
    QCOMPARE(listed["skills"_L1][0]["rating_avg"_L1], QJsonValue(3.5));
    QCOMPARE(listed["skills"_L1][0]["install_count"_L1], QJsonValue(1));
}

QTEST_GUILESS_MAIN(PeopleTest)
#include "tst_homeserver_people.moc"
