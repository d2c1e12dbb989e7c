// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QTcpSocket>
#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

class EventsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyDeviceButTheSending();
    void outsidersHearNothing();
    void firstFrameMustSignIn_data();
    void firstFrameMustSignIn();
    void silenceIsCutOff();
    void hostileFramesAreDropped_data();
    void hostileFramesAreDropped();
    void hugeFrameEndsTheSocket();
    void deadReaderIsCutOff();
    void presence();
    void newcomerIsAnnounced();
    void echoAnswers();
    void assistantAnswers_data();
    void assistantAnswers();
    void robotsKeepOutOfGroups();
};

void EventsTest::everyDeviceButTheSending() {
    Site site;
    Person anna(site, u"anna"_s, u"a-1"_s);
    const Person annasPhone = Person::signIn(site, u"anna"_s, u"a-2"_s);
    // Two devices of different people may call themselves the same.
    Person bert(site, u"bert"_s, u"a-1"_s);
    Listener sending(site, anna);
    Listener sendingToo(site, anna);
    Listener phone(site, annasPhone);
    Listener berts(site, bert);

    const QString chat = anna.directChatWith(bert);
    const QString id = anna.say(chat, u"hello"_s);
    for (Listener *listener : {&phone, &berts}) {
        const QJsonObject event = listener->next(u"messenger_message"_s);
        QCOMPARE(event["chat_id"_L1], QJsonValue(chat));
        QCOMPARE(event["message"_L1]["id"_L1], QJsonValue(id));
        QCOMPARE(event["message"_L1]["sender_id"_L1], QJsonValue(QString::number(anna.id)));
        QCOMPARE(event["message"_L1]["content"_L1], QJsonValue("hello"_L1));
        QVERIFY(event["message"_L1]["created_at"_L1].isDouble());
        QVERIFY(!listener->has(u"messenger_message"_s));
    }
    QVERIFY(!sending.has(u"messenger_message"_s));
    QVERIFY(!sendingToo.has(u"messenger_message"_s));
}

void EventsTest::outsidersHearNothing() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    Person carl(site, u"carl"_s);
    Listener carls(site, carl);
    const QString chat = anna.directChatWith(bert);
    const QString id = anna.say(chat, u"secret"_s);
    carls.send({{"type"_L1, "read_receipt"_L1}, {"chat_id"_L1, chat}, {"message_id"_L1, id}});
    QVERIFY(!carls.has(u"messenger_message"_s));
    QCOMPARE(carl.get(u"chats/%1/messages"_s.arg(chat)).status, 403);
    QCOMPARE(carl.post(u"chats/%1/messages"_s.arg(chat), {{"content"_L1, "x"_L1}}).status, 403);
    QCOMPARE(carl.get(u"chats/unknown/messages"_s).status, 404);
}

void EventsTest::firstFrameMustSignIn_data() {
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<bool>("binary");
    QTest::newRow("nonsense") << QByteArray("hello") << false;
    QTest::newRow("empty") << QByteArray("") << false;
    QTest::newRow("ping") << QByteArray(R"({"type":"ping"})") << false;
    QTest::newRow("no token") << QByteArray(R"({"type":"auth"})") << false;
    QTest::newRow("empty token") << QByteArray(R"({"type":"auth","token":""})") << false;
    QTest::newRow("wrong token") << QByteArray(R"({"type":"auth","token":"abc"})") << false;
    QTest::newRow("number as token") << QByteArray(R"({"type":"auth","token":1})") << false;
    QTest::newRow("binary") << QByteArray(R"({"type":"auth","token":"abc"})") << true;
}

void EventsTest::firstFrameMustSignIn() {
    QFETCH(QByteArray, frame);
    QFETCH(bool, binary);
    Site site;
    Listener stranger(site);
    if (binary)
        stranger.socket.sendBinaryMessage(frame);
    else
        stranger.socket.sendTextMessage(QString::fromUtf8(frame));
    QTRY_VERIFY(!stranger.isOpen());
    QVERIFY(stranger.events.isEmpty());
}

void EventsTest::silenceIsCutOff() {
    Site site([](Options &options) { options.authTimeout = 50; });
    Listener stranger(site);
    QTRY_VERIFY(!stranger.isOpen());
}

void EventsTest::hostileFramesAreDropped_data() {
    QTest::addColumn<QByteArray>("frame");
    for (const char *frame :
         {"", "{", "[1,2]", "17", "null", R"({"kind":"x"})", R"({"type":5})", R"({"type":"unheard_of"})",
          R"({"type":"read_receipt"})", R"({"type":"read_receipt","message_id":7})",
          R"({"type":"read_receipt","message_id":"unknown","chat_id":"lobby"})",
          R"({"type":"auth","token":"other"})",
          R"({"type":"messenger_message","chat_id":"lobby","message":{}})",
          R"({"type":"read_receipt","user_id":1})"})
        QTest::newRow(*frame ? frame : "empty") << QByteArray(frame);
}

void EventsTest::hostileFramesAreDropped() {
    QFETCH(QByteArray, frame);
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    Listener annas(site, anna);
    Listener berts(site, bert);
    annas.events.clear();
    annas.socket.sendTextMessage(QString::fromUtf8(frame));
    annas.socket.sendBinaryMessage(frame);
    QVERIFY(!annas.has(u"x"_s));
    QVERIFY(!berts.has(u"messenger_message"_s));
    // Still served.
    bert.say(lobby(), u"hi"_s);
    QVERIFY(!annas.next(u"messenger_message"_s).isEmpty());
}

void EventsTest::hugeFrameEndsTheSocket() {
    Site site;
    Person anna(site, u"anna"_s);
    Listener annas(site, anna);
    annas.socket.sendTextMessage(QString(300LL * 1024, u'x'));
    QTRY_VERIFY(!annas.isOpen());
    QCOMPARE(anna.get(u"chats"_s).status, 200);
}

void EventsTest::deadReaderIsCutOff() {
    Site site([](Options &options) { options.maxUnsentBytes = 512LL * 1024; });
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    // A reader that takes nothing: the bytes pile up at the server.
    QTcpSocket dead;
    dead.setReadBufferSize(1024);
    dead.connectToHost(site.server().webSocketUrl().host(),
                       static_cast<quint16>(site.server().webSocketUrl().port()));
    dead.write("GET / HTTP/1.1\r\nHost: x\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
               "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n");
    QTRY_VERIFY(dead.bytesAvailable() > 100);
    const QByteArray sign = R"({"type":"auth","token":")" + anna.token.toUtf8() + "\"}";
    QByteArray frame("\x81", 1);
    frame.append(static_cast<char>(0x80 | sign.size()));
    dead.write(frame + QByteArray(4, '\0') + sign); // the mask of zeros leaves the text as it is
    const QString name = u"anna"_s;
    const auto online = [&] {
        return bert.get(u"users/search?q="_s + name).json["users"_L1][0]["status"_L1] == "online"_L1;
    };
    QTRY_VERIFY(online());
    const QString large(700LL * 1024, u'x');
    for (int i = 0; i < 40 && online(); ++i)
        bert.say(lobby(), large);
    QVERIFY(!online());
}

void EventsTest::presence() {
    Site site;
    Person anna(site, u"anna"_s, u"a-1"_s);
    const Person annasPhone = Person::signIn(site, u"anna"_s, u"a-2"_s);
    Person bert(site, u"bert"_s);
    Listener berts(site, bert);
    const auto status = [&] { return berts.next(u"user_status"_s)["status"_L1].toString(); };
    {
        Listener first(site, anna);
        QCOMPARE(status(), u"online"_s);
        Listener second(site, annasPhone);
        first.socket.close();
        QTRY_VERIFY(!first.isOpen());
        QVERIFY(!berts.has(u"user_status"_s)); // the other device is still there
    }
    QCOMPARE(status(), u"offline"_s);
}

void EventsTest::newcomerIsAnnounced() {
    Site site;
    Person anna(site, u"anna"_s);
    Listener annas(site, anna);
    const Person bert(site, u"bert"_s);
    QCOMPARE(annas.next(u"user_status"_s)["user_id"_L1], QJsonValue(QString::number(bert.id)));
}

void EventsTest::echoAnswers() {
    Site site;
    Person anna(site, u"anna"_s);
    Listener annas(site, anna);
    const qint64 echo = robotId(anna, u"bot_echo"_s);
    const QString chat = anna.directChatWith(echo);
    anna.say(chat, u"ping?"_s);
    const QJsonObject typing = annas.next(u"typing"_s);
    QCOMPARE(typing["user_id"_L1], QJsonValue(QString::number(echo)));
    QCOMPARE(typing["is_typing"_L1], QJsonValue(true));
    const QJsonObject message = annas.next(u"messenger_message"_s)["message"_L1].toObject();
    QCOMPARE(message["content"_L1], QJsonValue("ping?"_L1));
    QCOMPARE(message["sender_id"_L1], QJsonValue(QString::number(echo)));
    QCOMPARE(annas.next(u"typing"_s)["is_typing"_L1], QJsonValue(false));
    QCOMPARE(anna.messages(chat).size(), 2);
    QCOMPARE(anna.chat(chat)["unread_count"_L1], QJsonValue(1));
}

void EventsTest::assistantAnswers_data() {
    QTest::addColumn<QString>("question");
    QTest::addColumn<QString>("part");
    QTest::newRow("greeting") << u"Hi there"_s << u"Hello, anna"_s;
    QTest::newRow("Russian greeting") << u"Добрый день!"_s << u"Здравствуйте, anna"_s;
    QTest::newRow("count") << u"How many chats do I have?"_s << u"Chats: 3"_s;
    QTest::newRow("unread") << u"сколько непрочитанных?"_s << u"Непрочитанных сообщений: 1."_s;
    QTest::newRow("latest") << u"show the latest"_s << u"bert: see you at noon"_s;
    QTest::newRow("no word inside a word") << u"this is all"_s << u"without a language model"_s;
    QTest::newRow("hostile") << QString(5000, u'%') << u"without a language model"_s;
}

void EventsTest::assistantAnswers() {
    QFETCH(QString, question);
    QFETCH(QString, part);
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    bert.say(lobby(), u"see you at noon"_s);
    Listener annas(site, anna);
    anna.say(anna.directChatWith(robotId(anna, u"ai_orvanetalk"_s)), question);
    const QString answer = annas.next(u"messenger_message"_s)["message"_L1]["content"_L1].toString();
    QVERIFY2(answer.contains(part), qPrintable(answer));
}

void EventsTest::robotsKeepOutOfGroups() {
    Site site;
    Person anna(site, u"anna"_s);
    Listener annas(site, anna);
    const QString group = anna.groupWith({robotId(anna, u"bot_echo"_s)});
    anna.say(group, u"anybody?"_s);
    QVERIFY(!annas.has(u"typing"_s));
    QCOMPARE(anna.messages(group).size(), 1);
}

QTEST_GUILESS_MAIN(EventsTest)
#include "tst_homeserver_events.moc"
