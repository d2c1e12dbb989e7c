// SPDX-License-Identifier: MIT
#include "QueueDesk.h"
#include "Support/Await.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

using namespace orvane;
using namespace Qt::StringLiterals;
using Status = PathMonitor::Status;

namespace {

const ScriptedAnswer taken = ScriptedAnswer::of(200, R"({"message":{}})");

bool drained(const QueueDesk &desk) {
    return !desk.log.lines().isEmpty() && desk.log.lines().last().startsWith("Drain done"_L1);
}

QString keysOf(const QList<RecordedRequest> &requests) {
    QStringList result;
    for (const RecordedRequest &request : requests)
        result.append(QString::fromLatin1(request.headers.value("idempotency-key")));
    return result.join(u' ');
}

} // namespace

class TestOfflineQueue : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anItemGoesOutAsItWasQueued() {
        const auto row = [](const QString &userID, qint64 sent) {
            const InRow named(userID.toUtf8());
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
            QCOMPARE(json::parseObject(request.body).value(),
                     (QJsonObject{{"user_id", sent}, {"content", message.content}, {"type", "text"}}));
            // "[]" in a box.
            QCOMPARE(QueueDesk::read(desk.sealedFile()).size(), 4 + 12 + 2 + 16);
            QCOMPARE(desk.saved(), QList<QueuedMessage>());
        };
        row(u"12"_s, 12);
        row(u"+12"_s, 12);
        for (const QString &none : {u"abc"_s, u""_s, u"9223372036854775808"_s})
            row(none, 0);
    }

    void anItemIsTriedUpToItsLimit() {
        const auto row = [](const char *name, const ScriptedAnswer &answer, qint64 retries, qint64 maxRetries,
                            const QString &line) {
            const InRow named(name);
            QueueDesk desk;
            desk.save({queued(u"m"_s, retries, maxRetries)});
            desk.http.answerNext(answer);
            desk.start();
            QVERIFY(outcomeOf(desk.queue->drain()).value);
            const bool failed = line.contains("failed"_L1);
            const bool sent = line.endsWith("sent"_L1);
            QCOMPARE(desk.http.requests().size(), sent || failed ? 1 : 0);
            QCOMPARE(desk.saved(),
                     failed ? QList{queued(u"m"_s, retries + 1, maxRetries)} : QList<QueuedMessage>());
            QCOMPARE(desk.log.lines(),
                     (QStringList{u"Loaded 1 encrypted queued messages"_s, u"Draining 1 messages..."_s, line,
                                  u"Drain done: %1 sent, %2 remaining"_s.arg(sent).arg(failed)}));
        };
        const auto ok = [](const QByteArray &body) { return ScriptedAnswer::of(200, body); };
        const auto sent = u"Item sent"_s;
        const auto failed = u"Item send failed; retry scheduled"_s;
        const auto gone = u"Dropping item after retry limit"_s;
        row("taken", taken, 0, 5, sent);
        row("refused", ScriptedAnswer::of(500, R"({"message":{}})"), 0, 5, failed);
        row("signed out", ScriptedAnswer::of(401), 0, 5, failed);
        row("no message", ok("{}"), 0, 5, failed);
        row("a message of another type", ok(R"({"message":"done"})"), 0, 5, failed);
        row("a list", ok(R"([{"message":{}}])"), 0, 5, failed);
        row("no JSON", ok("<html>"), 0, 5, failed);
        row("nothing", ok(""), 0, 5, failed);
        row("half an answer", ScriptedAnswer::truncated(R"({"message":{)"), 0, 5, failed);
        row("the last attempt succeeds", taken, 4, 5, sent);
        row("the last attempt fails", ok("{}"), 4, 5, failed);
        row("no attempt is left", taken, 5, 5, gone);
        row("more attempts than allowed", taken, 9, 5, gone);
        row("no attempt was ever allowed", taken, 0, -1, gone);
    }

    void aFailureHoldsNobodyUp() {
        QueueDesk desk;
        desk.save({queued(u"a"_s), queued(u"b"_s, 5), queued(u"c"_s), queued(u"c"_s)});
        desk.http.answerNext(ScriptedAnswer::of(503));
        desk.http.answerFor("/api/messenger/chats/c/messages", taken);
        desk.start();
        QVERIFY(outcomeOf(desk.queue->drain()).value);
        QCOMPARE(keysOf(desk.http.requests()), "a c c");
        QCOMPARE(desk.saved(), QList{queued(u"a"_s, 1)});
        // Two with one id are one.
        QCOMPARE(desk.log.lines().last(), "Drain done: 1 sent, 1 remaining");
    }

    void aDrainKnowsOnlyWhatWasThereWhenItBegan() {
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
        QCOMPARE(keysOf(desk.http.requests()), "a b");
        QCOMPARE(desk.saved(), QList<QueuedMessage>());
        QCOMPARE(desk.log.lines().last(), "Drain done: 2 sent, 0 remaining");
    }

    void onlyASatisfiedPathDrains() {
        QueueDesk desk;
        desk.save({queued(u"a"_s)});
        desk.start();
        QVERIFY(desk.path->started);
        desk.path->say(Status::unsatisfied);
        // A drain would have begun before this is done.
        desk.enqueue(queued(u"b"_s));
        QCOMPARE(desk.log.lines().last(), u"Queued 2 messages — will send when online");
        desk.http.answerFor("/api/messenger/chats/c/messages", taken);
        desk.path->say(Status::satisfied);
        QTRY_VERIFY(drained(desk));
        QCOMPARE(desk.http.requests().size(), 2);
        // Nor does one begin where there is nothing to send.
        const QStringList before = desk.log.lines();
        QVERIFY(outcomeOf(desk.queue->drain()).value);
        QCOMPARE(desk.log.lines(), before);
        // One that has ended doesn't stand in the way of the next.
        desk.enqueue(queued(u"c"_s));
        QVERIFY(outcomeOf(desk.queue->drain()).value);
        QCOMPARE(keysOf(desk.http.requests()), "a b c");
    }

    void aLostAnswerIsAskedForWithTheSameKey() {
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
        QCOMPARE(keysOf(desk.http.requests()), "once once");
        QCOMPARE(desk.saved(), QList<QueuedMessage>());
    }

    void aQueueThatGoesAwayMidDrainLeavesItsFile() {
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
};

ORVANE_TEST_MAIN(TestOfflineQueue)
#include "tst_offline_queue.moc"
