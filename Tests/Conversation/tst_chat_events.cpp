// SPDX-License-Identifier: MIT
#include "Conversation/OpenChat.h"
#include "Support/TestMain.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

MessengerPoll pollWith(const QSet<QString> &a, const QSet<QString> &b) {
    MessengerPoll poll;
    poll.id = u"p"_s;
    poll.options = {PollOption{u"a"_s, u"A"_s, a}, PollOption{u"b"_s, u"B"_s, b}};
    return poll;
}

} // namespace

class TestChatEvents : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anEventChangesTheMessagesItNames_data();
    void anEventChangesTheMessagesItNames();
    void anEventThatLacksSomethingChangesNothing_data();
    void anEventThatLacksSomethingChangesNothing();
    void typingIsWhatWasSaidLast();
    void aVoteCreditsTheLastVoter_data();
    void aVoteCreditsTheLastVoter();
    void aDirectMessageIsAppended_data();
    void aDirectMessageIsAppended();
    void idsFromTheLocalNetworkReachNoOtherPath_data();
    void idsFromTheLocalNetworkReachNoOtherPath();
};

/// The first message in short: text, whether edited, reactions, how far it got.
static QString shortForm(const OpenChat &chat) {
    QStringList rows;
    for (const MessengerMessage &message : chat.screen->messages.records()) {
        QStringList reactions;
        for (const MessageReaction &reaction : message.reactions)
            reactions.append(reaction.emoji + QString::number(reaction.userIDs.size()));
        reactions.sort();
        rows.append(u"%1:%2:%3:%4:%5"_s.arg(message.id, message.content, message.editedAt ? "edited" : "",
                                            reactions.join(u'+'),
                                            message.isRead ? rawText(message.deliveryStatus) : u"unread"_s));
    }
    return rows.join(u' ');
}

void TestChatEvents::anEventChangesTheMessagesItNames_data() {
    QTest::addColumn<QByteArray>("event");
    QTest::addColumn<QString>("after");
    const auto row = [](const char *name, const char *event, const char *after) {
        QTest::newRow(name) << QByteArray(event) << QString::fromUtf8(after);
    };
    row("edited", R"({"type":"messenger_message_edited","message":{"id":"m1","content":"new"}})",
        "m1:new:edited::sent m2:hi:::sent m1:hi:::sent");
    row("edited, unknown", R"({"type":"messenger_message_edited","message":{"id":"x","content":"new"}})",
        "m1:hi:::sent m2:hi:::sent m1:hi:::sent");
    row("deleted, all of the id", R"({"type":"messenger_message_deleted","message_id":"m1"})",
        "m2:hi:::sent");
    row("reactions", R"({"type":"messenger_reaction","message_id":"m2","reactions":[
            {"emoji":"🔥","user_id":7},{"emoji":"🔥","user_id":"9"},{"emoji":5}]})",
        "m1:hi:::sent m2:hi::🔥2:sent m1:hi:::sent");
    row("no reactions left", R"({"type":"messenger_reaction","message_id":"m2","reactions":[]})",
        "m1:hi:::sent m2:hi:::sent m1:hi:::sent");
    row("read", R"({"type":"messenger_read_receipt","message_ids":["m2","m1","x"]})",
        "m1:hi:::read m2:hi:::read m1:hi:::sent");
    row("read, one", R"({"type":"messenger_read_receipt","message_id":"m2"})",
        "m1:hi:::sent m2:hi:::read m1:hi:::sent");
    row("read, list of something else",
        R"({"type":"messenger_read_receipt","message_ids":7,"message_id":"m2"})",
        "m1:hi:::sent m2:hi:::read m1:hi:::sent");
    row("read, an empty list counts",
        R"({"type":"messenger_read_receipt","message_ids":[],"message_id":"m2"})",
        "m1:hi:::sent m2:hi:::sent m1:hi:::sent");
}

void TestChatEvents::anEventChangesTheMessagesItNames() {
    QFETCH(QByteArray, event);
    QFETCH(QString, after);
    OpenChat chat({OpenChat::record("m1", "9"), OpenChat::record("m2", "7"), OpenChat::record("m1", "7")});
    chat.arrive(event.chopped(1) + R"(,"chat_id":"d"})");
    QCOMPARE(shortForm(chat), u"m1:hi:::sent m2:hi:::sent m1:hi:::sent"_s);
    chat.arrive(event.chopped(1) + R"(,"chat_id":"c"})");
    QCOMPARE(shortForm(chat), after);
}

void TestChatEvents::anEventThatLacksSomethingChangesNothing_data() {
    QTest::addColumn<QByteArray>("event");
    const char *events[] = {
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
    };
    for (const char *event : events)
        QTest::newRow(event) << QByteArray(R"({"chat_id":"c","type":)") + event + "}";
}

void TestChatEvents::anEventThatLacksSomethingChangesNothing() {
    QFETCH(QByteArray, event);
    OpenChat chat({OpenChat::record("m1", "9")});
    chat.screen->changeAt(0, [](MessengerMessage &message) { message.poll = pollWith({}, {}); });
    const QList<MessengerMessage> before = chat.screen->messages.records();
    chat.arrive(event);
    QVERIFY(chat.screen->messages.records() == before);
    QVERIFY(chat.screen->typingUserIDs.value().isEmpty());
}

void TestChatEvents::typingIsWhatWasSaidLast() {
    OpenChat chat({OpenChat::record("m1", "9")});
    const auto typing = [&](const char *user, const char *is) {
        chat.arrive(R"({"type":"typing","chat_id":"c","user_id":")"_ba + user + R"(","is_typing":)" + is +
                    "}");
        return chat.screen->typingLine();
    };
    QCOMPARE(typing("5", "false"), QString());
    QCOMPARE(typing("9", "true"), u"Ben is typing…"_s);
    QCOMPARE(typing("9", "true"), u"Ben is typing…"_s);
    QCOMPARE(typing("5", "true"), u"Ben, Someone are typing…"_s);
    QCOMPARE(typing("9", "\"no\""), u"Ben, Someone are typing…"_s);
    QCOMPARE(typing("9", "false"), u"Someone is typing…"_s);
}

void TestChatEvents::aVoteCreditsTheLastVoter_data() {
    QTest::addColumn<QByteArray>("results");
    QTest::addColumn<bool>("inA");
    QTest::addColumn<bool>("inB");
    QTest::newRow("moves") << QByteArray(R"({"a":0,"b":2})") << false << true;
    QTest::newRow("every option with votes") << QByteArray(R"({"a":3,"b":1})") << true << true;
    QTest::newRow("missing options have none") << QByteArray("{}") << false << false;
    QTest::newRow("counts that are none") << QByteArray(R"({"a":"3","b":-1})") << false << false;
}

void TestChatEvents::aVoteCreditsTheLastVoter() {
    QFETCH(QByteArray, results);
    QFETCH(bool, inA);
    QFETCH(bool, inB);
    OpenChat chat({OpenChat::record("m1", "9"), OpenChat::record("m1", "9")});
    chat.screen->changeAt(1, [](MessengerMessage &message) { message.poll = pollWith({"5", "9"}, {"7"}); });
    chat.arrive(
        R"({"type":"poll_vote","chat_id":"c","poll_id":"p","option_id":"b","voter_id":"9","results":)" +
        results + "}");
    const QList<PollOption> options = chat.message(1).poll->options;
    QCOMPARE(options.at(0).voters.contains("9"), inA);
    QCOMPARE(options.at(1).voters.contains("9"), inB);
    QVERIFY(options.at(0).voters.contains("5") && options.at(1).voters.contains("7"));
}

void TestChatEvents::aDirectMessageIsAppended_data() {
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<bool>("taken");
    const auto row = [](const char *name, const char *info, bool taken) {
        QTest::newRow(name) << QByteArray(info) << taken;
    };
    row("whole", R"({"chat_id":"c","message":{"id":"m1","sender_id":"9","content":"x","created_at":5.5}})",
        true);
    row("no id, no time", R"({"chat_id":"c","message":{"sender_id":"9","content":"x"}})", true);
    row("another chat", R"({"chat_id":"d","message":{"id":"m","sender_id":"9","content":"x"}})", false);
    row("sender as number", R"({"chat_id":"c","message":{"id":"m","sender_id":9,"content":"x"}})", false);
    row("no content", R"({"chat_id":"c","message":{"id":"m","sender_id":"9"}})", false);
    row("message as list", R"({"chat_id":"c","message":[]})", false);
}

void TestChatEvents::aDirectMessageIsAppended() {
    QFETCH(QByteArray, info);
    QFETCH(bool, taken);
    OpenChat chat;
    chat.screen->appear();
    QTRY_VERIFY(!chat.screen->isLoading);
    const int before = chat.screen->messages.count();
    chat.centre.post(u"orvaneOpenChat"_s, json::parseObject(info).value());
    QCOMPARE(chat.screen->messages.count(), before);
    chat.centre.post(u"orvaneP2PMessage"_s, json::parseObject(info).value());
    QCOMPARE(chat.screen->messages.count(), before + int(taken));
    if (taken) {
        QVERIFY(!chat.screen->messages.records().last().id.isEmpty());
        QCOMPARE(chat.screen->messages.records().last().deliveryStatus, DeliveryStatus::sent);
    }
}

void TestChatEvents::idsFromTheLocalNetworkReachNoOtherPath_data() {
    QTest::addColumn<QString>("id");
    QTest::addColumn<bool>("kept");
    for (const char *id : {"0", "1A2b-3c_4", "-", "64 letters"})
        QTest::addRow("%s", id) << QString(id).replace("64 letters", QString(64, u'z')) << true;
    for (const char *id : {"../invites/CODE?", "../devices/ID?", "..", ".", "", "a/b", "a#b", "%2e%2e", "a\n",
                           "\u0436", "\u0661", "65 letters", "a b"})
        QTest::addRow("not %s", id) << QString(id).replace("65 letters", QString(65, u'z')) << false;
}

void TestChatEvents::idsFromTheLocalNetworkReachNoOtherPath() {
    QFETCH(QString, id);
    QFETCH(bool, kept);
    OpenChat chat;
    chat.screen->appear();
    QTRY_VERIFY(!chat.screen->isLoading);
    const QJsonObject raw{{"id", id}, {"sender_id", "9"}, {"content", "x"}};
    chat.centre.post("orvaneP2PMessage", {{"chat_id", "c"}, {"message", raw}});
    const MessengerMessage taken = chat.screen->messages.records().last();
    QCOMPARE(taken.id == id, kept);
    chat.screen->toggleStar(taken);
    const QByteArray target = "/api/messenger/messages/" + taken.id.toUtf8() + "/star";
    QTRY_COMPARE(chat.http.lastRequest().target, target);
    QVERIFY(QRegularExpression("^[-/_A-Za-z0-9]+$").match(QString::fromUtf8(target)).hasMatch());
}

ORVANE_TEST_MAIN(TestChatEvents)
#include "tst_chat_events.moc"
