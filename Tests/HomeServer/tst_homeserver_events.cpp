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
    void everyDeviceButTheSending() {
        Site site;
        Person anna(site, u"anna"_s, u"a-1"_s);
        const Person annasPhone = Person::signIn(site, u"anna"_s, u"a-2"_s);
        // Two devices of different people may call themselves the same.
        const Person bert(site, u"bert"_s, u"a-1"_s);
        const Person carl(site, u"carl"_s);
        Listener sending(site, anna);
        Listener sendingToo(site, anna);
        Listener phone(site, annasPhone);
        Listener berts(site, bert);
        Listener carls(site, carl);
        const QString chat = anna.directChatWith(bert);
        const QString id = anna.say(chat, u"hello"_s);
        for (Listener *listener : {&phone, &berts}) {
            const QJsonObject event = listener->next(u"messenger_message"_s);
            QCOMPARE(event["chat_id"_L1], QJsonValue(chat));
            const QJsonObject message = event["message"_L1].toObject();
            QCOMPARE(message["id"_L1], QJsonValue(id));
            QCOMPARE(message["sender_id"_L1], QJsonValue(QString::number(anna.id)));
            QCOMPARE(message["content"_L1], QJsonValue("hello"_L1));
            QVERIFY(message["created_at"_L1].isDouble());
            QVERIFY(!listener->has(u"messenger_message"_s));
        }
        carls.send({{"type"_L1, "read_receipt"_L1}, {"chat_id"_L1, chat}, {"message_id"_L1, id}});
        for (Listener *listener : {&sending, &sendingToo, &carls})
            QVERIFY(!listener->has(u"messenger_message"_s));
        QVERIFY(!sending.has(u"messenger_read_receipt"_s));
    }

    void firstFrameMustSignIn() {
        Site site([](Options &options) { options.authTimeout = 2000; });
        for (const char *frame :
             {"hello", "", R"({"type":"ping"})", R"({"type":"auth"})", R"({"type":"auth","token":""})",
              R"({"type":"auth","token":"abc"})", R"({"type":"auth","token":1})", "binary"}) {
            Listener stranger(site);
            if (QByteArrayView(frame) == "binary")
                stranger.socket.sendBinaryMessage(R"({"type":"auth","token":"abc"})");
            else
                stranger.socket.sendTextMessage(QString::fromUtf8(frame));
            QVERIFY2(QTest::qWaitFor([&] { return !stranger.isOpen(); }, 1500), frame);
            QVERIFY(stranger.events.isEmpty());
        }
        Listener silent(site);
        QTRY_VERIFY(!silent.isOpen());
    }

    void hostileFramesAreDropped() {
        Company c;
        Listener annas(c.site, c.anna);
        Listener berts(c.site, c.bert);
        annas.has({});
        annas.events.clear();
        for (const char *frame :
             {"", "{", "[1,2]", "17", "null", R"({"kind":"x"})", R"({"type":5})", R"({"type":"unheard_of"})",
              R"({"type":"read_receipt"})", R"({"type":"read_receipt","message_id":7})",
              R"({"type":"read_receipt","message_id":"unknown","chat_id":"lobby"})",
              R"({"type":"auth","token":"other"})",
              R"({"type":"messenger_message","chat_id":"lobby","message":{}})",
              R"({"type":"read_receipt","user_id":1})"}) {
            annas.socket.sendTextMessage(QString::fromUtf8(frame));
            annas.socket.sendBinaryMessage(frame);
            QVERIFY2(!annas.has({}) && annas.events.isEmpty(), frame);
        }
        QVERIFY(!berts.has(u"messenger_message"_s));
        c.bert.say(lobby(), u"hi"_s); // still served
        QVERIFY(!annas.next(u"messenger_message"_s).isEmpty());
        annas.socket.sendTextMessage(QString(300LL * 1024, u'x'));
        QTRY_VERIFY(!annas.isOpen());
        QCOMPARE(c.anna.get(u"chats"_s).status, 200);
    }

    void deadReaderIsCutOff() {
        Company c([](Options &options) { options.maxUnsentBytes = 512LL * 1024; });
        // A reader that takes nothing: the bytes pile up at the server.
        QTcpSocket dead;
        dead.setReadBufferSize(1024);
        const QUrl url = c.site.server().webSocketUrl();
        dead.connectToHost(url.host(), static_cast<quint16>(url.port()));
        dead.write("GET / HTTP/1.1\r\nHost: x\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                   "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n");
        QTRY_VERIFY(dead.bytesAvailable() > 100);
        const QByteArray sign = "{\"type\":\"auth\",\"token\":\"" + c.anna.token.toUtf8() + "\"}";
        QByteArray frame("\x81", 1);
        frame.append(static_cast<char>(0x80 | sign.size()));
        dead.write(frame + QByteArray(4, '\0') + sign); // the mask of zeros leaves the text as it is
        const auto online = [&] {
            return c.bert.get(u"users/search?q=anna"_s).text("users.0.status") == "online"_L1;
        };
        QTRY_VERIFY(online());
        const QString large(700LL * 1024, u'x');
        for (int i = 0; i < 40 && online(); ++i)
            c.bert.say(lobby(), large);
        QVERIFY(!online());
    }

    void presence() {
        Site site;
        const Person bert(site, u"bert"_s);
        Listener berts(site, bert);
        const Person anna(site, u"anna"_s, u"a-1"_s);
        const auto status = [&] { return berts.next(u"user_status"_s); };
        QCOMPARE(status()["user_id"_L1], QJsonValue(QString::number(anna.id))); // a newcomer
        const Person annasPhone = Person::signIn(site, u"anna"_s, u"a-2"_s);
        {
            Listener first(site, anna);
            QCOMPARE(status()["status"_L1], QJsonValue("online"_L1));
            Listener second(site, annasPhone);
            first.socket.close();
            QTRY_VERIFY(!first.isOpen());
            QVERIFY(!berts.has(u"user_status"_s)); // the other device is still there
        }
        QCOMPARE(status()["status"_L1], QJsonValue("offline"_L1));
    }

    void echoAnswersWhenAlone() {
        Company c;
        Listener annas(c.site, c.anna);
        const qint64 echo = robotId(c.anna, u"bot_echo"_s);
        const QString group = c.anna.groupWith({echo});
        c.anna.say(group, u"anybody?"_s);
        QVERIFY(!annas.has(u"typing"_s));
        QCOMPARE(c.anna.messages(group).size(), 1);

        const QString chat = c.anna.directChatWith(echo);
        c.anna.say(chat, u"ping?"_s);
        const QJsonObject typing = annas.next(u"typing"_s);
        QCOMPARE(typing["user_id"_L1], QJsonValue(QString::number(echo)));
        QCOMPARE(typing["is_typing"_L1], QJsonValue(true));
        const QJsonObject message = annas.next(u"messenger_message"_s)["message"_L1].toObject();
        QCOMPARE(message["content"_L1], QJsonValue("ping?"_L1));
        QCOMPARE(message["sender_id"_L1], QJsonValue(QString::number(echo)));
        QCOMPARE(annas.next(u"typing"_s)["is_typing"_L1], QJsonValue(false));
        QCOMPARE(c.anna.messages(chat).size(), 2);
        QCOMPARE(c.anna.chat(chat)["unread_count"_L1], QJsonValue(1));
    }

    void assistantAnswers() {
        Company c;
        c.bert.say(lobby(), u"see you at noon"_s);
        Listener annas(c.site, c.anna);
        const QString chat = c.anna.directChatWith(robotId(c.anna, u"ai_orvanetalk"_s));
        for (const auto &[question, part] :
             {std::pair(u"сколько непрочитанных?"_s, u"Непрочитанных сообщений: 1."_s),
              {u"Hi there"_s, u"Hello, anna"_s},
              {u"Добрый день!"_s, u"Здравствуйте, anna"_s},
              {u"How many chats do I have?"_s, u"Chats: 4"_s},
              {u"show the latest"_s, u"bert: see you at noon"_s},
              {u"this is all"_s, u"without a language model"_s}, // no word inside a word
              {QString(5000, u'%'), u"without a language model"_s}}) {
            c.anna.say(chat, question);
            const QJsonObject event = annas.next(u"messenger_message"_s);
            QVERIFY2(valueAt(event, "message.content").toString().contains(part), qPrintable(question));
        }
    }
};

QTEST_GUILESS_MAIN(EventsTest)
#include "tst_homeserver_events.moc"
