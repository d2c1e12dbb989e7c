// SPDX-License-Identifier: MIT
#include "QueueDesk.h"
#include "Support/Await.h"
#include "Support/TestMain.h"

using namespace orvane;
using namespace Qt::StringLiterals;
using Status = PathMonitor::Status;

class TestOfflineQueue : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anItemGoesOutAsItWasQueued_data();
    void anItemGoesOutAsItWasQueued();
    void anItemIsTriedUpToItsLimit_data();
    void anItemIsTriedUpToItsLimit();
    void aFailureHoldsNobodyUp();
    void aDrainKnowsOnlyWhatWasThereWhenItBegan();
    void onlyASatisfiedPathDrains();
    void aLostAnswerIsAskedForWithTheSameKey();
    void aQueueThatGoesAwayMidDrainLeavesItsFile();
};

namespace {

const ScriptedAnswer taken = ScriptedAnswer::of(200, R"({"message":{}})");

bool drained(const QueueDesk &desk) {
    return !desk.log.lines().isEmpty() && desk.log.lines().last().startsWith(u"Drain done"_s);
}

QStringList keysOf(const QList<RecordedRequest> &requests) {
    QStringList result;
    for (const RecordedRequest &request : requests)
        result.append(QString::fromLatin1(request.headers.value("idempotency-key")));
    return result;
}

} // namespace

void TestOfflineQueue::anItemGoesOutAsItWasQueued_data() {
    QTest::addColumn<QString>("userID");
    QTest::addColumn<qint64>("sent");
    QTest::newRow("an id") << u"12"_s << qint64(12);
    QTest::newRow("a sign") << u"+12"_s << qint64(12);
    QTest::newRow("no number") << u"abc"_s << qint64(0);
    QTest::newRow("nothing") << u""_s << qint64(0);
    QTest::newRow("too large") << u"9223372036854775808"_s << qint64(0);
}

void TestOfflineQueue::anItemGoesOutAsItWasQueued() {
    QFETCH(QString, userID);
    QueueDesk desk;
    desk.http.answerNext(taken);
    desk.start();
    QueuedMessage message = queued(u"key-1"_s);
    message.userID = userID;
    message.content = u"\"<b>\" 👋\n"_s;
    desk.enqueue(message);
    QVERIFY(outcomeOf(desk.queue->drain()).value);
    QCOMPARE(desk.http.requests().size(), 1);
    const RecordedRequest request = desk.http.lastRequest();
    QCOMPARE(request.method + ' ' + request.target, "POST /api/messenger/chats/c/messages");
    QCOMPARE(request.headers.value("idempotency-key"), "key-1");
    QCOMPARE(request.headers.value("authorization"), "Bearer t0k");
    QFETCH(qint64, sent);
    QCOMPARE(json::parseObject(request.body).value(),
             (QJsonObject{{"user_id", sent}, {"content", message.content}, {"type", "text"}}));
    // "[]" in a box.
    QCOMPARE(QueueDesk::read(desk.sealedFile()).size(), 4 + 12 + 2 + 16);
    QCOMPARE(desk.saved(), QList<QueuedMessage>());
}

void TestOfflineQueue::anItemIsTriedUpToItsLimit_data() {
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<qint64>("retries");
    QTest::addColumn<qint64>("maxRetries");
    QTest::addColumn<QString>("said");
    const auto row = [](const char *name, const ScriptedAnswer &answer, qint64 retries, qint64 maxRetries,
                        const char *said) {
        QTest::newRow(name) << answer << retries << maxRetries << QString::fromLatin1(said);
    };
    const auto ok = [](const QByteArray &body) { return ScriptedAnswer::of(200, body); };
    row("taken", taken, 0, 5, "sent");
    row("refused", ScriptedAnswer::of(500, R"({"message":{}})"), 0, 5, "failed");
    row("signed out", ScriptedAnswer::of(401), 0, 5, "failed");
    row("no message", ok("{}"), 0, 5, "failed");
    row("a message of another type", ok(R"({"message":"done"})"), 0, 5, "failed");
    row("a list", ok(R"([{"message":{}}])"), 0, 5, "failed");
    row("no JSON", ok("<html>"), 0, 5, "failed");
    row("nothing", ok(""), 0, 5, "failed");
    row("half an answer", ScriptedAnswer::truncated(R"({"message":{)"), 0, 5, "failed");
    row("the last attempt succeeds", taken, 4, 5, "sent");
    row("the last attempt fails", ok("{}"), 4, 5, "failed");
    row("no attempt is left", taken, 5, 5, "dropped");
    row("more attempts than allowed", taken, 9, 5, "dropped");
    row("no attempt was ever allowed", taken, 0, -1, "dropped");
}

void TestOfflineQueue::anItemIsTriedUpToItsLimit() {
    QFETCH(ScriptedAnswer, answer);
    QFETCH(qint64, retries);
    QFETCH(qint64, maxRetries);
    QFETCH(QString, said);
    QueueDesk desk;
    desk.save({queued(u"m"_s, retries, maxRetries)});
    desk.http.answerNext(answer);
    desk.start();
    QVERIFY(outcomeOf(desk.queue->drain()).value);
    const bool failed = said == u"failed";
    QCOMPARE(desk.http.requests().size(), said == u"dropped" ? 0 : 1);
    QCOMPARE(desk.saved(), failed ? QList{queued(u"m"_s, retries + 1, maxRetries)} : QList<QueuedMessage>());
    const QString line = failed            ? u"Item send failed; retry scheduled"_s
                         : said == u"sent" ? u"Item sent"_s
                                           : u"Dropping item after retry limit"_s;
    const QString done = u"Drain done: %1 sent, %2 remaining"_s.arg(said == u"sent").arg(failed);
    QCOMPARE(desk.log.lines(),
             (QStringList{u"Loaded 1 encrypted queued messages"_s, u"Draining 1 messages..."_s, line, done}));
}

void TestOfflineQueue::aFailureHoldsNobodyUp() {
    QueueDesk desk;
    desk.save({queued(u"a"_s), queued(u"b"_s, 5), queued(u"c"_s), queued(u"c"_s)});
    desk.http.answerNext(ScriptedAnswer::of(503));
    desk.http.answerNext(taken);
    desk.http.answerNext(taken);
    desk.start();
    QVERIFY(outcomeOf(desk.queue->drain()).value);
    QCOMPARE(keysOf(desk.http.requests()), (QStringList{"a", "c", "c"}));
    QCOMPARE(desk.saved(), QList{queued(u"a"_s, 1)});
    // Two with one id are one.
    QCOMPARE(desk.log.lines().last(), u"Drain done: 1 sent, 1 remaining"_s);
}

void TestOfflineQueue::aDrainKnowsOnlyWhatWasThereWhenItBegan() {
    QueueDesk desk;
    desk.save({queued(u"a"_s), queued(u"b"_s)});
    desk.http.answerNext(taken.heldBack());
    desk.http.answerNext(taken);
    desk.start();
    desk.path->say(Status::satisfied);
    QTRY_COMPARE(desk.http.requests().size(), 1);
    const QStringList before = desk.log.lines();
    QVERIFY(outcomeOf(desk.queue->drain()).value);
    QCOMPARE(desk.log.lines(), before);
    desk.enqueue(queued(u"late"_s));
    QCOMPARE(desk.saved(), (QList{queued(u"a"_s), queued(u"b"_s), queued(u"late"_s)}));
    QCOMPARE(desk.http.requests().size(), 1);
    desk.http.release();
    QTRY_VERIFY(drained(desk));
    QCOMPARE(keysOf(desk.http.requests()), (QStringList{"a", "b"}));
    QCOMPARE(desk.saved(), QList<QueuedMessage>());
    QCOMPARE(desk.log.lines().last(), u"Drain done: 2 sent, 0 remaining"_s);
}

void TestOfflineQueue::onlyASatisfiedPathDrains() {
    QueueDesk desk;
    desk.save({queued(u"a"_s)});
    desk.start();
    QVERIFY(desk.path->started);
    desk.path->say(Status::unsatisfied);
    // A drain would have begun before this is done.
    desk.enqueue(queued(u"b"_s));
    QCOMPARE(desk.log.lines().last(), u"Queued 2 messages — will send when online"_s);
    desk.http.answerFor("/api/messenger/chats/c/messages", taken);
    desk.path->say(Status::satisfied);
    QTRY_VERIFY(drained(desk));
    QCOMPARE(desk.http.requests().size(), 2);
    // Nor does one begin where there is nothing to send.
    const QStringList before = desk.log.lines();
    QVERIFY(outcomeOf(desk.queue->drain()).value);
    QCOMPARE(desk.log.lines(), before);
}

void TestOfflineQueue::aLostAnswerIsAskedForWithTheSameKey() {
    QueueDesk desk;
    desk.http.answerNext(ScriptedAnswer::truncated(R"({"message":{}})"));
    desk.http.answerNext(taken);
    desk.start();
    desk.enqueue(queued(u"once"_s));
    desk.queue.reset();
    for (int run = 0; run < 2; ++run) {
        desk.start();
        QVERIFY(outcomeOf(desk.queue->drain()).value);
        desk.queue.reset();
    }
    QCOMPARE(keysOf(desk.http.requests()), (QStringList{"once", "once"}));
    QCOMPARE(desk.saved(), QList<QueuedMessage>());
}

void TestOfflineQueue::aQueueThatGoesAwayMidDrainLeavesItsFile() {
    QueueDesk desk;
    desk.save({queued(u"a"_s), queued(u"b"_s)});
    desk.http.answerNext(taken.heldBack());
    desk.start();
    auto drain = desk.queue->drain();
    QTRY_COMPARE(desk.http.requests().size(), 1);
    desk.queue.reset();
    desk.http.release();
    QVERIFY(outcomeOf(std::move(drain)).value);
    QCOMPARE(desk.http.requests().size(), 1);
    QCOMPARE(desk.saved(), (QList{queued(u"a"_s), queued(u"b"_s)}));
}

ORVANE_TEST_MAIN(TestOfflineQueue)
#include "tst_offline_queue.moc"
