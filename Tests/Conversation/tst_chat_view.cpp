// SPDX-License-Identifier: MIT
#include "Conversation/Screen/MessengerChatView.h"
#include "Support/OpenChatParts.h"
#include "Support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

const QByteArray historyTarget = "/api/messenger/chats/c/messages?limit=50";
const QByteArray postTarget = "/api/messenger/chats/c/messages";

MessengerChat directChat() {
    MessengerChat chat;
    chat.id = u"c"_s;
    chat.participants = {u"7"_s, u"9"_s};
    return chat;
}

std::shared_ptr<MessengerChatView> open(OpenChatParts &parts, const QString &user = u"7"_s) {
    MessengerUser ben;
    ben.id = u"9"_s;
    ben.displayName = u"Ben"_s;
    return std::make_shared<MessengerChatView>(directChat(), Contacts{{ben.id, ben}}, user,
                                               parts.chatParts());
}

/// The same with every change of the model checked, which takes time.
std::shared_ptr<MessengerChatView> openChecked(OpenChatParts &parts) {
    auto screen = open(parts);
    new QAbstractItemModelTester(&screen->messages, QAbstractItemModelTester::FailureReportingMode::QtTest,
                                 screen.get());
    return screen;
}

QByteArray record(const char *id, const char *sender, double time, const char *text = "hi") {
    return uR"({"id":"%1","sender_id":"%2","content":"%3","created_at":%4})"_s
        .arg(QLatin1StringView(id), QLatin1StringView(sender), QLatin1StringView(text))
        .arg(time, 0, 'f', 3)
        .toUtf8();
}

QByteArray history(const QList<QByteArray> &records) {
    return R"({"messages":[)" + records.join(',') + "]}";
}

void load(MessengerChatView &screen) {
    screen.loadMessages();
    QTRY_VERIFY(!screen.isLoading);
}

QStringList ids(const MessengerChatView &screen) {
    QStringList result;
    for (const MessengerMessage &message : screen.messages.records())
        result.append(message.id);
    return result;
}

QStringList receipts(const OpenChatParts &parts) {
    return parts.events.frames(0).filter(u"read_receipt"_s);
}

} // namespace

class TestChatView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void historyIsSortedAndReadUpToTheOthersLastMessage();
    void noReceiptWithoutAMessageOfSomebodyElse_data();
    void noReceiptWithoutAMessageOfSomebodyElse();
    void aHistoryThatCanNotBeHadIsReplacedByTheSample_data();
    void aHistoryThatCanNotBeHadIsReplacedByTheSample();
    void historyReplacesWhatArrivedMeanwhile();
    void aTextGoesOutAsTyped_data();
    void aTextGoesOutAsTyped();
    void blankTextIsKept_data();
    void blankTextIsKept();
    void theAnswerDecidesTheStatus_data();
    void theAnswerDecidesTheStatus();
    void twoSendsAreSettledEachByItsOwnAnswer();
    void aSendOutlivesItsScreen();
    void anEventAppendsItsMessage_data();
    void anEventAppendsItsMessage();
    void badEventsAreDropped_data();
    void badEventsAreDropped();
    void tenThousandEventsWhileHistoryLoadsLoseNothingOfIt();
};

void TestChatView::historyIsSortedAndReadUpToTheOthersLastMessage() {
    OpenChatParts parts;
    parts.socket.connect(u"tok"_s);
    const auto screen = open(parts);
    parts.http.answerNext(
        ScriptedAnswer::of(200, history({record("m3", "7", 30), record("m1", "9", 10.25), "{}",
                                         R"({"id":5,"sender_id":"9","content":"x","created_at":1})",
                                         record("m2", "9", 20), record("m2b", "9", 20)})));
    load(*screen);
    QCOMPARE(parts.http.lastRequest().target, historyTarget);
    QCOMPARE(ids(*screen), (QStringList{"m1", "m2", "m2b", "m3"}));
    QCOMPARE(screen->messages.at(0).timestamp.toMSecsSinceEpoch(), 10250);
    QTRY_COMPARE(receipts(parts).size(), 1);
    const QJsonObject receipt = json::parseObject(receipts(parts).first().toUtf8()).value();
    QCOMPARE(receipt, (QJsonObject{{"type", "read_receipt"}, {"chat_id", "c"}, {"message_id", "m2b"}}));
}

void TestChatView::noReceiptWithoutAMessageOfSomebodyElse_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("count");
    QTest::newRow("empty") << history({}) << 0;
    QTest::newRow("own only") << history({record("m", "7", 1)}) << 1;
    QTest::newRow("no list") << QByteArray("[]") << 0;
    QTest::newRow("list with a number in it") << history({record("m", "9", 1), "17"}) << 0;
    QTest::newRow("list of another type") << QByteArray(R"({"messages":{"0":1}})") << 0;
}

void TestChatView::noReceiptWithoutAMessageOfSomebodyElse() {
    QFETCH(QByteArray, body);
    QFETCH(int, count);
    OpenChatParts parts;
    parts.socket.connect(u"tok"_s);
    const auto screen = open(parts);
    parts.http.answerNext(ScriptedAnswer::of(200, body));
    load(*screen);
    QCOMPARE(screen->messages.count(), count);
    // Whatever had been sent would stand before this frame.
    parts.socket.send({{u"type"_s, u"mark"_s}});
    QTRY_COMPARE(parts.events.frames(0).filter(u"mark"_s).size(), 1);
    QVERIFY(receipts(parts).isEmpty());
}

void TestChatView::aHistoryThatCanNotBeHadIsReplacedByTheSample_data() {
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("500") << QByteArray("HTTP/1.1 500 No\r\nContent-Length: 0\r\n\r\n");
    QTest::newRow("HTML") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\n<html>");
    QTest::newRow("empty body") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    QTest::newRow("half an answer") << QByteArray(
        "HTTP/1.1 200 OK\r\nContent-Length: 60\r\n\r\n{\"messages\":[");
    QTest::newRow("no HTTP") << QByteArray("\x16\x03\x01 gibberish\n\n");
}

void TestChatView::aHistoryThatCanNotBeHadIsReplacedByTheSample() {
    QFETCH(QByteArray, answer);
    OpenChatParts parts;
    parts.socket.connect(u"tok"_s);
    const auto screen = open(parts);
    // The network library asks again by itself when a connection ends without a word of HTTP.
    parts.http.answerFor("/api/messenger/chats/c/messages", ScriptedAnswer::raw(answer));
    load(*screen);
    QCOMPARE(screen->messages.count(), 3);
    QCOMPARE(screen->messages.at(0).senderID, u"9"_s);
    QCOMPARE(screen->messages.at(1).content, u"Almost done!"_s);
    QCOMPARE(screen->messages.at(1).senderID, u"7"_s);
    QCOMPARE(screen->messages.at(0).timestamp.secsTo(screen->messages.at(2).timestamp), 1800);
    parts.socket.send({{u"type"_s, u"mark"_s}});
    QTRY_COMPARE(parts.events.frames(0).filter(u"mark"_s).size(), 1);
    QVERIFY(receipts(parts).isEmpty());
}

void TestChatView::historyReplacesWhatArrivedMeanwhile() {
    OpenChatParts parts;
    const auto screen = openChecked(parts);
    parts.http.answerNext(ScriptedAnswer::of(200, history({record("m1", "9", 10)})).heldBack());
    screen->loadMessages();
    QTRY_COMPARE(parts.http.requests().size(), 1);
    parts.arrive(R"({"type":"messenger_message","chat_id":"c","message":)" + record("live", "9", 11) + "}");
    QCOMPARE(ids(*screen), QStringList{"live"});
    parts.http.release();
    QTRY_COMPARE(ids(*screen), QStringList{"m1"});
}

void TestChatView::aTextGoesOutAsTyped_data() {
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("userId");
    QTest::newRow("blanks stay") << "7"
                                 << "  hello \n"
                                 << qint64(7);
    QTest::newRow("emoji, quotes, right to left")
        << "7" << u"👩‍👩‍👧 \"\\ שלום\u202e"_s << qint64(7);
    QTest::newRow("user id that is none") << "me"
                                          << "x" << qint64(0);
    QTest::newRow("a million letters") << "7" << QString(1'000'000, u'ж') << qint64(7);
}

void TestChatView::aTextGoesOutAsTyped() {
    QFETCH(QString, user);
    QFETCH(QString, text);
    QFETCH(qint64, userId);
    OpenChatParts parts;
    parts.signIn();
    const auto screen = open(parts, user);
    screen->inputText = text;
    screen->sendMessage();
    QVERIFY(screen->inputText.value().isEmpty());
    QCOMPARE(screen->messages.count(), 1);
    const MessengerMessage local = screen->messages.at(0);
    QCOMPARE(local.content, text);
    QCOMPARE(local.senderID, user);
    QCOMPARE(local.deliveryStatus, DeliveryStatus::sending);
    QCOMPARE(local.id, local.id.toUpper());
    QTRY_COMPARE(parts.http.requests().size(), 1);
    const RecordedRequest request = parts.http.lastRequest();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.target, postTarget);
    QCOMPARE(request.headers.value("idempotency-key"), local.id.toUtf8());
    QCOMPARE(request.headers.value("authorization"), QByteArray("Bearer tok"));
    QCOMPARE(json::parseObject(request.body).value(),
             (QJsonObject{{"user_id", userId}, {"content", text}, {"type", "text"}}));
}

void TestChatView::blankTextIsKept_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("blanks") << "   ";
    QTest::newRow("line breaks") << "\n\t \u00a0\u2003\n";
}

void TestChatView::blankTextIsKept() {
    QFETCH(QString, text);
    OpenChatParts parts;
    const auto screen = open(parts);
    screen->inputText = text;
    screen->sendMessage();
    QCOMPARE(screen->inputText.value(), text);
    QCOMPARE(screen->messages.count(), 0);
}

void TestChatView::theAnswerDecidesTheStatus_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("expected");
    const int sent = int(DeliveryStatus::sent);
    const int failed = int(DeliveryStatus::failed);
    QTest::newRow("message object") << 200 << QByteArray(R"({"message":{"id":"server"}})") << sent;
    QTest::newRow("201") << 201 << QByteArray(R"({"message":{}})") << sent;
    QTest::newRow("no message") << 200 << QByteArray("{}") << failed;
    QTest::newRow("message as text") << 200 << QByteArray(R"({"message":"ok"})") << failed;
    QTest::newRow("a list") << 200 << QByteArray("[]") << failed;
    QTest::newRow("HTML") << 200 << QByteArray("<html>") << failed;
    QTest::newRow("empty") << 204 << QByteArray() << failed;
    QTest::newRow("refused") << 403 << QByteArray(R"({"message":{}})") << failed;
}

void TestChatView::theAnswerDecidesTheStatus() {
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(int, expected);
    OpenChatParts parts;
    const auto screen = open(parts);
    parts.http.answerNext(ScriptedAnswer::of(status, body));
    screen->inputText = u"x"_s;
    screen->sendMessage();
    const QString id = screen->messages.at(0).id;
    QTRY_COMPARE(int(screen->messages.at(0).deliveryStatus), expected);
    QCOMPARE(ids(*screen), QStringList{id});
}

void TestChatView::twoSendsAreSettledEachByItsOwnAnswer() {
    OpenChatParts parts;
    const auto screen = openChecked(parts);
    parts.http.answerNext(ScriptedAnswer::of(200, R"({"message":{}})").heldBack());
    parts.http.answerNext(ScriptedAnswer::of(200, R"({"message":{}})"));
    screen->inputText = u"first"_s;
    screen->sendMessage();
    QTRY_COMPARE(parts.http.requests().size(), 1);
    screen->inputText = u"second"_s;
    screen->sendMessage();
    QTRY_COMPARE(screen->messages.at(1).deliveryStatus, DeliveryStatus::sent);
    QCOMPARE(screen->messages.at(0).deliveryStatus, DeliveryStatus::sending);
    parts.http.release();
    QTRY_COMPARE(screen->messages.at(0).deliveryStatus, DeliveryStatus::sent);
}

void TestChatView::aSendOutlivesItsScreen() {
    OpenChatParts parts;
    auto screen = open(parts);
    const std::weak_ptr<MessengerChatView> watched = screen;
    parts.http.answerNext(ScriptedAnswer::of(200, R"({"message":{}})").heldBack());
    parts.http.answerNext(ScriptedAnswer::of(200, history({})).heldBack());
    screen->inputText = u"x"_s;
    screen->sendMessage();
    screen->loadMessages();
    QTRY_COMPARE(parts.http.requests().size(), 2);
    screen.reset();
    QVERIFY(!watched.expired());
    parts.http.release();
    QTRY_VERIFY(watched.expired());
    // Nobody follows the events of a screen that is gone.
    parts.arrive(R"({"type":"messenger_message","chat_id":"c","message":)" + record("late", "9", 11) + "}");
}

void TestChatView::anEventAppendsItsMessage_data() {
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("dated");
    QTest::newRow("plain") << record("m", "9", 10) << int(MessageType::text) << true;
    QTest::newRow("own, from another device") << record("m", "7", 10) << int(MessageType::text) << true;
    QTest::newRow("no time") << QByteArray(R"({"id":"m","sender_id":"9","content":"hi"})")
                             << int(MessageType::text) << false;
    QTest::newRow("time as text") << QByteArray(
                                         R"({"id":"m","sender_id":"9","content":"hi","created_at":"10"})")
                                  << int(MessageType::text) << false;
    QTest::newRow("sticker")
        << QByteArray(R"({"id":"m","sender_id":"9","content":"hi","created_at":10,"type":"sticker"})")
        << int(MessageType::sticker) << true;
    QTest::newRow("unknown type")
        << QByteArray(R"({"id":"m","sender_id":"9","content":"hi","created_at":10,"type":"banana"})")
        << int(MessageType::text) << true;
}

void TestChatView::anEventAppendsItsMessage() {
    QFETCH(QByteArray, message);
    QFETCH(int, type);
    QFETCH(bool, dated);
    OpenChatParts parts;
    const auto screen = openChecked(parts);
    parts.http.answerNext(ScriptedAnswer::of(200, history({record("m", "9", 5)})));
    load(*screen);
    const QDateTime before = QDateTime::currentDateTime();
    parts.arrive(R"({"type":"messenger_message","chat_id":"c","message":)" + message + "}");
    // The id may stand in the list already; the message is appended all the same.
    QCOMPARE(ids(*screen), (QStringList{"m", "m"}));
    const MessengerMessage appended = screen->messages.at(1);
    QCOMPARE(int(appended.type), type);
    QVERIFY(!appended.isRead);
    QCOMPARE(appended.deliveryStatus, DeliveryStatus::sent);
    if (dated)
        QCOMPARE(appended.timestamp.toMSecsSinceEpoch(), 10'000);
    else
        QVERIFY(appended.timestamp >= before);
}

void TestChatView::badEventsAreDropped_data() {
    QTest::addColumn<QByteArray>("event");
    const QByteArray good = record("m", "9", 10);
    QTest::newRow("another chat") << R"({"type":"messenger_message","chat_id":"d","message":)" + good + "}";
    QTest::newRow("chat as number") << R"({"type":"messenger_message","chat_id":5,"message":)" + good + "}";
    QTest::newRow("no chat") << R"({"type":"messenger_message","message":)" + good + "}";
    QTest::newRow("no message") << QByteArray(R"({"type":"messenger_message","chat_id":"c"})");
    QTest::newRow("message as text") << QByteArray(
        R"({"type":"messenger_message","chat_id":"c","message":"m"})");
    QTest::newRow("another type") << R"({"type":"messenger","chat_id":"c","message":)" + good + "}";
    QTest::newRow("no id") << QByteArray(
        R"({"type":"messenger_message","chat_id":"c","message":{"sender_id":"9","content":"x"}})");
    QTest::newRow("id as number") << QByteArray(
        R"({"type":"messenger_message","chat_id":"c","message":{"id":1,"sender_id":"9","content":"x"}})");
    QTest::newRow("sender as number") << QByteArray(
        R"({"type":"messenger_message","chat_id":"c","message":{"id":"1","sender_id":9,"content":"x"}})");
    QTest::newRow("no content") << QByteArray(
        R"({"type":"messenger_message","chat_id":"c","message":{"id":"1","sender_id":"9"}})");
}

void TestChatView::badEventsAreDropped() {
    QFETCH(QByteArray, event);
    OpenChatParts parts;
    const auto screen = open(parts);
    parts.http.answerNext(ScriptedAnswer::of(200, history({})));
    load(*screen);
    parts.arrive(event);
    QCOMPARE(screen->messages.count(), 0);
}

void TestChatView::tenThousandEventsWhileHistoryLoadsLoseNothingOfIt() {
    OpenChatParts parts;
    const auto screen = open(parts);
    parts.http.answerNext(
        ScriptedAnswer::of(200, history({record("m1", "9", 10), record("m2", "9", 11)})).heldBack());
    screen->loadMessages();
    QTRY_COMPARE(parts.http.requests().size(), 1);
    const QJsonObject event = json::parseObject(R"({"type":"messenger_message","chat_id":"c","message":)" +
                                                record("live", "9", 11) + "}")
                                  .value();
    for (int i = 0; i < 10'000; ++i)
        Q_EMIT parts.socket.events(WSEvent{u"messenger_message"_s, event});
    QCOMPARE(screen->messages.count(), 10'000);
    parts.http.release();
    QTRY_COMPARE(ids(*screen), (QStringList{"m1", "m2"}));
}

ORVANE_TEST_MAIN(TestChatView)
#include "tst_chat_view.moc"
