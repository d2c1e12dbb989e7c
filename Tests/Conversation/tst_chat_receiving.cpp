// SPDX-License-Identifier: MIT
#include "Conversation/OpenChat.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QRegularExpression>

using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

MessengerPoll pollWith(const QSet<QString> &a, const QSet<QString> &b) {
    MessengerPoll poll;
    poll.id = u"p"_s;
    poll.options = {PollOption{u"a"_s, u"A"_s, a}, PollOption{u"b"_s, u"B"_s, b}};
    return poll;
}

/// The messages in short: id, text, type where it is another, when where it is not ten seconds after the
/// beginning, whether edited, reactions, how far it got.
QString shortForm(const OpenChat &chat) {
    QStringList rows;
    for (const MessengerMessage &message : chat.screen->messages.records()) {
        QStringList words{message.id, message.content};
        if (message.type != MessageType::text)
            words << rawText(message.type);
        if (message.timestamp.toMSecsSinceEpoch() != 10'000)
            words << (message.timestamp.secsTo(QDateTime::currentDateTime()) < 60 ? u"now"_s : u"then"_s);
        if (message.editedAt)
            words << u"edited"_s;
        QStringList reactions;
        for (const MessageReaction &reaction : message.reactions)
            reactions.append(reaction.emoji + QString::number(reaction.userIDs.size()));
        words << reactions;
        if (!message.isRead)
            words << u"unread"_s;
        if (message.deliveryStatus != DeliveryStatus::sent)
            words << rawText(message.deliveryStatus);
        rows.append(words.join(u':'));
    }
    return rows.join(u' ');
}

} // namespace

class TestChatReceiving : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void historyIsSortedAndReadUpToTheOthersLastMessage() {
        const auto row = [](const QByteArray &body, const char *ids, const QJsonArray &read) {
            const InRow named(body);
            OpenChat chat;
            chat.socket.connect(u"tok"_s);
            chat.http.answerNext(ScriptedAnswer::of(200, body));
            chat.load();
            QCOMPARE(chat.http.lastRequest().target, OpenChat::target + "?limit=50");
            QCOMPARE(chat.ids(), ids);
            QTRY_COMPARE(chat.events.connections(), 1);
            QJsonArray receipts;
            for (const QJsonObject &frame : chat.frames(u"read_receipt"_s)) {
                QCOMPARE(frame.value("chat_id"), "c");
                receipts.append(frame.value("message_id"));
            }
            QCOMPARE(receipts, read);
        };
        const auto one = [](const char *id, const char *sender, const char *time) {
            return OpenChat::record(id, sender, "hi", time);
        };
        row(OpenChat::answer({one("m3", "7", "30"), one("m1", "9", "10.25"), "{}",
                              R"({"id":5,"sender_id":"9","content":"x","created_at":1})",
                              one("m2", "9", "20"), one("m2b", "9", "20"), one("m1b", "9", "10.75")}),
            "m1 m1b m2 m2b m3", {"m2b"});
        row(OpenChat::answer({}), "", {});
        row(OpenChat::answer({one("m", "7", "1")}), "m", {});
        row("[]", "", {});
        row(OpenChat::answer({one("m", "9", "1"), "17"}), "", {});
        row(R"({"messages":{"0":1}})", "", {});
    }

    void aHistoryThatCanNotBeHadIsReplacedByTheSample() {
        for (const QByteArray &answer : {"HTTP/1.1 500 No\r\nContent-Length: 0\r\n\r\n"_ba,
                                         "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\n<html>"_ba,
                                         "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"_ba,
                                         "HTTP/1.1 200 OK\r\nContent-Length: 60\r\n\r\n{\"messages\":["_ba,
                                         "\x16\x03\x01 gibberish\n\n"_ba}) {
            const InRow row(answer);
            OpenChat chat;
            chat.socket.connect(u"tok"_s);
            // The network library asks again by itself when a connection ends without a word of HTTP.
            chat.http.answerFor(OpenChat::target, ScriptedAnswer::raw(answer));
            chat.load();
            QCOMPARE(chat.screen->messages.count(), 3);
            QCOMPARE(chat.message(0).senderID, "9");
            QCOMPARE(chat.message(1).senderID, "7");
            QCOMPARE(chat.message(1).content, "Almost done!");
            QCOMPARE(chat.message(0).timestamp.secsTo(chat.message(2).timestamp), 1800);
            QTRY_COMPARE(chat.events.connections(), 1);
            QVERIFY(chat.frames(u"read_receipt"_s).isEmpty());
        }
    }

    void historyReplacesWhatArrivedMeanwhile() {
        OpenChat chat;
        const QList<QByteArray> history{OpenChat::record("m1", "9"), OpenChat::record("m2", "9")};
        chat.http.answerNext(ScriptedAnswer::of(200, OpenChat::answer(history)).heldBack());
        chat.screen->loadMessages();
        QTRY_COMPARE(chat.http.requests().size(), 1);
        const QJsonObject raw = json::parseObject(OpenChat::record("live", "9")).value();
        for (int number = 0; number < 10'000; ++number)
            Q_EMIT chat.socket.events(WSEvent{u"messenger_message"_s, {{"chat_id", "c"}, {"message", raw}}});
        QCOMPARE(chat.screen->messages.count(), 10'000);
        chat.http.release();
        QTRY_COMPARE(chat.ids(), "m1 m2");
    }

    void anEventChangesTheMessagesItNames() {
        const QString before = u"m1:hi m2:hi m1:hi"_s;
        const auto row = [&](const QByteArray &event, const QString &after) {
            const InRow named(event);
            OpenChat chat(
                {OpenChat::record("m1", "9"), OpenChat::record("m2", "7"), OpenChat::record("m1", "7")});
            chat.arrive(R"({"chat_id":"d","type":)" + event + "}");
            chat.arrive(R"({"chat_id":5,"type":)" + event + "}");
            chat.arrive(R"({"type":)" + event + "}");
            QCOMPARE(shortForm(chat), before);
            chat.arrive(R"({"chat_id":"c","type":)" + event + "}");
            QCOMPARE(shortForm(chat), after);
        };
        row(R"("messenger_message_edited","message":{"id":"m1","content":"new"})",
            "m1:new:edited m2:hi m1:hi");
        row(R"("messenger_message_edited","message":{"id":"x","content":"new"})", before);
        row(R"("messenger_message_deleted","message_id":"m1")", "m2:hi");
        row(R"("messenger_reaction","message_id":"m2","reactions":[
            {"emoji":"🔥","user_id":7},{"emoji":"🔥","user_id":"9"},{"emoji":5}])",
            u"m1:hi m2:hi:🔥2 m1:hi"_s);
        row(R"("messenger_read_receipt","message_ids":["m2","m1","x"])", "m1:hi:read m2:hi:read m1:hi");
        row(R"("messenger_read_receipt","message_id":"m2")", "m1:hi m2:hi:read m1:hi");
        row(R"("messenger_read_receipt","message_ids":7,"message_id":"m2")", "m1:hi m2:hi:read m1:hi");
        // An empty list counts.
        row(R"("messenger_read_receipt","message_ids":[],"message_id":"m2")", before);
        // A message is appended whatever stands in the list already, and whoever wrote it.
        const auto added = [&](const QByteArray &message, const QString &after) {
            row(R"("messenger_message","message":)" + message, before + " " + after);
        };
        added(OpenChat::record("m1", "9", "x"), "m1:x:unread");
        added(OpenChat::record("m", "7", "x"), "m:x:unread");
        added(R"({"id":"m","sender_id":"9","content":"x"})", "m:x:now:unread");
        added(R"({"id":"m","sender_id":"9","content":"x","created_at":"10"})", "m:x:now:unread");
        added(R"({"id":"m","sender_id":"9","content":"x","created_at":10,"type":"sticker"})",
              "m:x:sticker:unread");
        added(R"({"id":"m","sender_id":"9","content":"x","created_at":10,"type":"banana"})", "m:x:unread");
    }

    void anEventThatLacksSomethingChangesNothing() {
        OpenChat chat({OpenChat::record("m1", "9")});
        chat.screen->messages.changeAt(0, [](MessengerMessage &message) { message.poll = pollWith({}, {}); });
        const QList<MessengerMessage> before = chat.screen->messages.records();
        for (const char *event : {
                 R"("messenger_message")",
                 R"("messenger_message","message":"m")",
                 R"("messenger","message":{"id":"m","sender_id":"9","content":"x"})",
                 R"("messenger_message","message":{"sender_id":"9","content":"x"})",
                 R"("messenger_message","message":{"id":1,"sender_id":"9","content":"x"})",
                 R"("messenger_message","message":{"id":"1","sender_id":9,"content":"x"})",
                 R"("messenger_message","message":{"id":"1","sender_id":"9"})",
                 R"("messenger_message_edited")",
                 R"("messenger_message_edited","message":{"id":"m1"})",
                 R"("messenger_message_edited","message":{"content":"x"})",
                 R"("messenger_message_edited","message":"m1")",
                 R"("messenger_message_deleted")",
                 R"("messenger_message_deleted","message_id":1)",
                 R"("messenger_reaction","message_id":"m1")",
                 R"("messenger_reaction","message_id":"m1","reactions":{"0":1})",
                 R"("messenger_read_receipt")",
                 R"("messenger_read_receipt","message_ids":[1,2])",
                 R"("poll_vote","poll_id":"p","option_id":"a","voter_id":"9")",
                 R"("poll_vote","poll_id":"p","option_id":"a","results":{"a":1})",
                 R"("poll_vote","poll_id":"p","voter_id":"9","results":{"a":1})",
                 R"("poll_vote","poll_id":"other","option_id":"a","voter_id":"9","results":{"a":1})",
                 R"("poll_vote","poll_id":"p","option_id":"a","voter_id":"9","results":[1])",
                 R"("typing","user_id":"9")",
                 R"("typing","user_id":9,"is_typing":true)",
                 R"("typing","is_typing":true)",
                 R"("banana","message_id":"m1")",
             }) {
            const InRow row(event);
            chat.arrive(R"({"chat_id":"c","type":)"_ba + event + "}");
            QVERIFY(chat.screen->messages.records() == before);
            QVERIFY(chat.screen->typingUserIDs.value().isEmpty());
        }
    }

    void typingIsWhatWasSaidLast() {
        OpenChat chat({OpenChat::record("m1", "9")});
        const auto typing = [&](const char *user, const char *is) {
            chat.arrive(R"({"type":"typing","chat_id":"c","user_id":")"_ba + user + R"(","is_typing":)" + is +
                        "}");
            return chat.screen->typingLine();
        };
        QCOMPARE(typing("5", "false"), QString());
        QCOMPARE(typing("9", "true"), u"Ben is typing…");
        QCOMPARE(typing("9", "true"), u"Ben is typing…");
        QCOMPARE(typing("5", "true"), u"Ben, Someone are typing…");
        QCOMPARE(typing("9", "\"no\""), u"Ben, Someone are typing…");
        QCOMPARE(typing("9", "false"), u"Someone is typing…");
    }

    void aVoteCreditsTheLastVoter() {
        const auto row = [](const QByteArray &results, bool inA, bool inB) {
            const InRow named(results);
            OpenChat chat({OpenChat::record("m1", "9"), OpenChat::record("m1", "9")});
            chat.screen->messages.changeAt(1, [](MessengerMessage &message) {
                message.poll = pollWith({"5", "9"}, {"7"});
            });
            chat.arrive(
                R"({"type":"poll_vote","chat_id":"c","poll_id":"p","option_id":"b","voter_id":"9","results":)" +
                results + "}");
            const QList<PollOption> options = chat.message(1).poll->options;
            QCOMPARE(options.at(0).voters.contains("9"), inA);
            QCOMPARE(options.at(1).voters.contains("9"), inB);
            QVERIFY(options.at(0).voters.contains("5") && options.at(1).voters.contains("7"));
        };
        row(R"({"a":0,"b":2})", false, true);
        row(R"({"a":3,"b":1})", true, true);
        row("{}", false, false);
        row(R"({"a":"3","b":-1})", false, false);
    }

    void aDirectMessageIsAppended() {
        OpenChat chat({OpenChat::record("m1", "9")});
        chat.screen->appear();
        QTRY_VERIFY(!chat.screen->isLoading);
        const auto row = [&](const QByteArray &info, bool taken) {
            const InRow named(info);
            const int before = chat.screen->messages.count();
            const QJsonObject userInfo = json::parseObject("{" + info + "}").value();
            chat.centre.post(u"orvaneOpenChat"_s, userInfo);
            QCOMPARE(chat.screen->messages.count(), before);
            chat.centre.post(u"orvaneP2PMessage"_s, userInfo);
            QCOMPARE(chat.screen->messages.count(), before + int(taken));
            QVERIFY(!chat.message(before + int(taken) - 1).id.isEmpty());
            QCOMPARE(chat.message(before + int(taken) - 1).deliveryStatus, DeliveryStatus::sent);
        };
        row(R"("chat_id":"c","message":{"id":"m1","sender_id":"9","content":"x","created_at":5.5})", true);
        QCOMPARE(chat.screen->messages.records().last().timestamp.toMSecsSinceEpoch(), 5500);
        row(R"("chat_id":"c","message":{"sender_id":"9","content":"x"})", true);
        row(R"("chat_id":"d","message":{"id":"m","sender_id":"9","content":"x"})", false);
        row(R"("chat_id":"c","message":{"id":"m","sender_id":9,"content":"x"})", false);
        row(R"("chat_id":"c","message":{"id":"m","sender_id":"9"})", false);
        row(R"("chat_id":"c","message":[])", false);
    }

    void idsFromTheLocalNetworkReachNoOtherPath() {
        OpenChat chat({OpenChat::record("m1", "9")});
        chat.screen->appear();
        QTRY_VERIFY(!chat.screen->isLoading);
        const auto row = [&](const QString &id, bool kept) {
            const InRow named(id.toUtf8());
            const QJsonObject raw{{"id", id}, {"sender_id", "9"}, {"content", "x"}};
            chat.centre.post("orvaneP2PMessage", {{"chat_id", "c"}, {"message", raw}});
            const MessengerMessage taken = chat.screen->messages.records().last();
            QCOMPARE(taken.id == id, kept);
            chat.screen->toggleStar(taken);
            const QByteArray target = "/api/messenger/messages/" + taken.id.toUtf8() + "/star";
            QTRY_COMPARE(chat.http.lastRequest().target, target);
            QVERIFY(QRegularExpression("^[-/_A-Za-z0-9]+$").match(QString::fromUtf8(target)).hasMatch());
        };
        for (const QString &id : {u"0"_s, u"1A2b-3c_4"_s, u"-"_s, QString(64, u'z')})
            row(id, true);
        for (const QString &id :
             {u"../invites/CODE?"_s, u"../devices/ID?"_s, u".."_s, u"."_s, u""_s, u"a/b"_s, u"a#b"_s,
              u"%2e%2e"_s, u"a\n"_s, u"\u0436"_s, u"\u0661"_s, QString(65, u'z'), u"a b"_s})
            row(id, false);
    }
};

ORVANE_TEST_MAIN(TestChatReceiving)
#include "tst_chat_receiving.moc"
