// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

class MessagesTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void newcomerFindsCompany();
    void newChats_data();
    void newChats();
    void oneDirectChatForTwo();
    void badMessages_data();
    void badMessages();
    void keysAreHonoured();
    void aKeyThatIsAFreeUuidIsTheMessagesId();
    void keysAreHonouredAfterRestart();
    void concurrentDuplicateIsOneMessage();
    void pages();
    void unreadFollowsReceipts();
    void everythingSurvivesRestart();
};

void MessagesTest::newcomerFindsCompany() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QJsonArray chats = bert.get(u"chats"_s).json["chats"_L1].toArray();
    QCOMPARE(chats.size(), 3);
    int direct = 0;
    for (const QJsonValue chat : chats) {
        QCOMPARE(chat["unread_count"_L1], QJsonValue(0));
        QVERIFY(chat["ai_enabled"_L1].isBool());
        for (const QJsonValue participant : chat["participants"_L1].toArray())
            QVERIFY(participant["user_id"_L1].isDouble());
        if (chat["type"_L1] == "direct"_L1) {
            ++direct;
            QVERIFY(chat["title"_L1].isNull());
        }
    }
    QCOMPARE(direct, 2);
    QCOMPARE(bert.chat(lobby())["participants"_L1].toArray().size(), 2);

    QStringList names;
    for (const QJsonValue contact :
         bert.get(u"contacts?user_id=%1"_s.arg(bert.id)).json["contacts"_L1].toArray()) {
        QVERIFY(contact["id"_L1].isString());
        QVERIFY(contact["status"_L1].isString());
        names.append(contact["username"_L1].toString());
    }
    names.sort();
    QCOMPARE(names, (QStringList{u"ai_orvanetalk"_s, u"anna"_s, u"bot_echo"_s}));
    QCOMPARE(bert.get(u"federation/info"_s).json["features"_L1].toArray(),
             QJsonArray{"assistant-contact"_L1});
    QVERIFY(bert.get(u"users/search?q=%1"_s.arg(anna.id)).json["users"_L1][0]["id"_L1] ==
            QString::number(anna.id));
}

void MessagesTest::newChats_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("group of one") << QByteArray(R"({"type":"group","title":"G","participants":[]})") << 201;
    QTest::newRow("untitled") << QByteArray(R"({"type":"group","title":null,"participants":[0]})") << 201;
    QTest::newRow("with a robot") << QByteArray(R"({"type":"direct","title":null,"participants":[1]})")
                                  << 201;
    QTest::newRow("nobody there") << QByteArray(R"({"type":"direct","title":null,"participants":[999]})")
                                  << 404;
    QTest::newRow("direct with oneself")
        << QByteArray(R"({"type":"direct","title":null,"participants":[3]})") << 400;
    QTest::newRow("direct with two") << QByteArray(R"({"type":"direct","title":null,"participants":[1,2]})")
                                     << 400;
    QTest::newRow("unknown type") << QByteArray(R"({"type":"party","title":null,"participants":[]})") << 400;
    QTest::newRow("fractional id") << QByteArray(R"({"type":"group","title":"G","participants":[1.5]})")
                                   << 400;
    QTest::newRow("text id") << QByteArray(R"({"type":"group","title":"G","participants":["1"]})") << 400;
    QTest::newRow("no list") << QByteArray(R"({"type":"group","title":"G"})") << 400;
    QTest::newRow("title of another type")
        << QByteArray(R"({"type":"group","title":[],"participants":[]})") << 400;
    QTest::newRow("in another's name")
        << QByteArray(R"({"user_id":1,"type":"group","title":"G","participants":[]})") << 403;
    QTest::newRow("in nobody's name")
        << QByteArray(R"({"user_id":"0","type":"group","title":"G","participants":[]})") << 201;
    QTest::newRow("in a broken name")
        << QByteArray(R"({"user_id":"x","type":"group","title":"G","participants":[]})") << 400;
}

void MessagesTest::newChats() {
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    Site site;
    Person anna(site, u"anna"_s);
    const Reply reply = anna.send("POST", u"chats"_s, body);
    QCOMPARE(reply.status, status);
    if (status == 201)
        QVERIFY(!anna.chat(reply.json["chat"_L1]["id"_L1].toString()).isEmpty());
}

void MessagesTest::oneDirectChatForTwo() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QString chat = anna.directChatWith(bert);
    QVERIFY(!chat.isEmpty());
    QCOMPARE(bert.directChatWith(anna), chat);
}

void MessagesTest::badMessages_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::newRow("no content") << QByteArray(R"({"type":"text"})") << 400;
    QTest::newRow("empty content") << QByteArray(R"({"content":"","type":"text"})") << 400;
    QTest::newRow("number") << QByteArray(R"({"content":1,"type":"text"})") << 400;
    QTest::newRow("unknown type") << QByteArray(R"({"content":"a","type":"banana"})") << 400;
    QTest::newRow("payload of another type") << QByteArray(R"({"content":"a","zk_payload":"x"})") << 400;
    QTest::newRow("reply of another type") << QByteArray(R"({"content":"a","reply_to":4})") << 400;
    QTest::newRow("another's name") << QByteArray(R"({"content":"a","user_id":1})") << 403;
    QTest::newRow("not exactly an integer") << QByteArray(R"({"content":"a","user_id":3.5})") << 400;
    QTest::newRow("NUL inside") << QByteArray(R"({"content":"a\u0000b"})") << 201;
    QTest::newRow("lone surrogate") << QByteArray(R"({"content":"a\ud800b"})") << 201;
}

void MessagesTest::badMessages() {
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    Site site;
    Person anna(site, u"anna"_s);
    QCOMPARE(anna.send("POST", u"chats/lobby/messages"_s, body).status, status);
    QCOMPARE(anna.messages(lobby()).size(), status == 201 ? 1 : 0);
}

void MessagesTest::keysAreHonoured() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QString path = u"chats/lobby/messages"_s;
    const Headers key{{"Idempotency-Key", "K-1"}};
    const Reply first = anna.post(path, {{"content"_L1, "a"_L1}}, key);
    QCOMPARE(first.status, 201);
    const Reply second = anna.post(path, {{"content"_L1, "a"_L1}}, key);
    QCOMPARE(second.status, 201);
    QCOMPARE(second.body, first.body);
    // Another person's key of the same name is another key.
    QVERIFY(bert.post(path, {{"content"_L1, "b"_L1}}, key).body != first.body);
    QCOMPARE(anna.messages(lobby()).size(), 2);
    // The same key cannot mean a message in another chat.
    const QString other = anna.directChatWith(bert);
    QCOMPARE(anna.post(u"chats/%1/messages"_s.arg(other), {{"content"_L1, "a"_L1}}, key).status, 409);
    // What was refused is not remembered.
    const Headers late{{"Idempotency-Key", "K-2"}};
    QCOMPARE(anna.post(path, {{"content"_L1, ""_L1}}, late).status, 400);
    QCOMPARE(anna.post(path, {{"content"_L1, "c"_L1}}, late).status, 201);
}

void MessagesTest::aKeyThatIsAFreeUuidIsTheMessagesId() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QString path = u"chats/%1/messages"_s.arg(anna.directChatWith(bert));
    const QString key = u"3F2504E0-4F89-41D3-9A0C-0305E82C3301"_s;
    const auto idOf = [&](Person &person, const QByteArray &wanted) {
        const Reply reply = person.post(path, {{"content"_L1, "x"_L1}}, {{"Idempotency-Key", wanted}});
        return reply.json["message"_L1]["id"_L1].toString();
    };
    QCOMPARE(idOf(anna, key.toLatin1()), key);
    // Somebody else's message stays what it is.
    const QString other = idOf(bert, key.toLatin1());
    QVERIFY(!other.isEmpty() && other != key);
    QVERIFY(idOf(anna, "../../K") != "../../K"_L1);
    QVERIFY(idOf(anna, "{3F2504E0-4F89-41D3-9A0C-0305E82C3302}").size() == 36);
}

void MessagesTest::keysAreHonouredAfterRestart() {
    Site site;
    Person anna(site, u"anna"_s);
    const Headers key{{"Idempotency-Key", "K-1"}};
    const Reply first = anna.post(u"chats/lobby/messages"_s, {{"content"_L1, "a"_L1}}, key);
    site.restart();
    QCOMPARE(anna.post(u"chats/lobby/messages"_s, {{"content"_L1, "a"_L1}}, key).body, first.body);
    QCOMPARE(anna.messages(lobby()).size(), 1);
}

void MessagesTest::concurrentDuplicateIsOneMessage() {
    Site site;
    Person anna(site, u"anna"_s);
    QList<QNetworkReply *> replies;
    for (int i = 0; i < 6; ++i)
        replies.append(anna.start("POST", u"chats/lobby/messages"_s, {{"content"_L1, "a"_L1}},
                                  {{"Idempotency-Key", "K"}}));
    QSet<QByteArray> bodies;
    for (QNetworkReply *reply : replies)
        bodies.insert(finish(reply).body);
    QCOMPARE(bodies.size(), 1);
    QCOMPARE(anna.messages(lobby()).size(), 1);
}

void MessagesTest::pages() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QString chat = anna.groupWith({bert.id});
    QStringList ids;
    for (int i = 0; i < 7; ++i)
        ids.append(anna.say(chat, QString::number(i))); // all within the same second
    const auto idsOf = [&](const QString &query) {
        QStringList found;
        for (const QJsonValue message : bert.messages(chat, query))
            found.append(message["id"_L1].toString());
        return found;
    };
    QCOMPARE(idsOf(u"?limit=50"_s), ids);
    QCOMPARE(idsOf(u"?limit=3"_s), ids.mid(4));
    QCOMPARE(idsOf(u"?limit=3&before=%1"_s.arg(ids[4])), ids.mid(1, 3));
    QCOMPARE(idsOf(u"?limit=3&before=%1"_s.arg(ids[0])), QStringList());
    QCOMPARE(bert.get(u"chats/%1/messages?limit=0"_s.arg(chat)).status, 400);
    QCOMPARE(bert.get(u"chats/%1/messages?limit=x"_s.arg(chat)).status, 400);
    QCOMPARE(bert.get(u"chats/%1/messages?before=unknown"_s.arg(chat)).status, 404);
    // A message of another chat is no place to read on from.
    const QString elsewhere = bert.say(lobby(), u"x"_s);
    QCOMPARE(bert.get(u"chats/%1/messages?before=%2"_s.arg(chat, elsewhere)).status, 404);
}

void MessagesTest::unreadFollowsReceipts() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QString chat = anna.directChatWith(bert);
    const QString first = anna.say(chat, u"1"_s);
    const QString second = anna.say(chat, u"2"_s);
    bert.say(chat, u"own"_s);
    anna.say(chat, u"3"_s);
    const auto unread = [&] { return bert.chat(chat)["unread_count"_L1].toInt(); };
    QCOMPARE(unread(), 3);
    QCOMPARE(anna.chat(chat)["unread_count"_L1].toInt(), 1);

    Listener annas(site, anna);
    Listener berts(site, bert);
    const auto read = [&](const QString &message) {
        berts.send({{"type"_L1, "read_receipt"_L1}, {"chat_id"_L1, chat}, {"message_id"_L1, message}});
    };
    read(second);
    const QJsonObject told = annas.next(u"messenger_read_receipt"_s);
    QCOMPARE(told["chat_id"_L1], QJsonValue(chat));
    QCOMPARE(told["message_id"_L1], QJsonValue(second));
    QCOMPARE(unread(), 1);
    // A late receipt for an older message does not bring anything back.
    read(first);
    QVERIFY(!berts.has(u"messenger_read_receipt"_s));
    QCOMPARE(unread(), 1);
    QVERIFY(!annas.has(u"messenger_read_receipt"_s));
}

void MessagesTest::everythingSurvivesRestart() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    const QString chat = anna.directChatWith(bert);
    anna.say(chat, u"Привет 🦉"_s);
    const QByteArray before = bert.get(u"chats"_s).body;
    const qint64 cursor = bert.get(u"sync?since=0"_s).json["cursor"_L1].toInteger();
    QVERIFY(cursor > 0);
    site.restart();
    QCOMPARE(bert.get(u"chats"_s).body, before);
    QCOMPARE(bert.messages(chat)[0]["content"_L1], QJsonValue(u"Привет 🦉"_s));
    const Reply sync = bert.get(u"sync?since=%1"_s.arg(cursor));
    QCOMPARE(sync.json["cursor"_L1].toInteger(), cursor);
    QVERIFY(sync.json["changed_chats"_L1].toArray().isEmpty());
    QCOMPARE(bert.get(u"sync?since=soon"_s).status, 400);
}

QTEST_GUILESS_MAIN(MessagesTest)
#include "tst_homeserver_messages.moc"
