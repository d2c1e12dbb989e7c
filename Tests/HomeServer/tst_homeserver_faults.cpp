// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QElapsedTimer>
#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

namespace {

const QString path = u"/api/messenger/chats/lobby/messages"_s;
const QJsonObject hello{{"content"_L1, "hello"_L1}};

// More than the HTTP library makes of one request by itself.
constexpr int attempts = 20;

} // namespace

class FaultsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void delay();
    void drop();
    void duplicate();
    void answerWith();
    void loseAnswer();
    void rulesFitByMethodPathAndCount();
    void closeSockets();
    void freezeAndThaw();
    void oversizedRequests_data();
    void oversizedRequests();
    void restartCutsWaitingRequests();
};

void FaultsTest::delay() {
    Site site;
    Person anna(site, u"anna"_s);
    site.server().faults().delay("POST", path, 300);
    QElapsedTimer timer;
    timer.start();
    QNetworkReply *late = anna.start("POST", path, hello, {});
    QCOMPARE(anna.messages(lobby()).size(), 0); // overtakes it
    QCOMPARE(finish(late).status, 201);
    QVERIFY(timer.elapsed() >= 300);
}

void FaultsTest::drop() {
    Site site;
    Person anna(site, u"anna"_s);
    site.server().faults().drop("POST", path, attempts);
    QCOMPARE(anna.post(path, hello).status, 0);
    QCOMPARE(anna.messages(lobby()).size(), 0);
}

void FaultsTest::duplicate() {
    Site site;
    Person anna(site, u"anna"_s);
    site.server().faults().duplicate("POST", path, 2);
    const Reply reply = anna.post(path, hello);
    QCOMPARE(anna.messages(lobby()).size(), 2);
    QCOMPARE(reply.json["message"_L1]["id"_L1], anna.messages(lobby())[1]["id"_L1]);
    // With a key the second run finds the first.
    anna.post(path, hello, {{"Idempotency-Key", "K"}});
    QCOMPARE(anna.messages(lobby()).size(), 3);
}

void FaultsTest::answerWith() {
    Site site;
    Person anna(site, u"anna"_s);
    site.server().faults().answerWith("POST", path, 503, "<html>");
    const Reply reply = anna.post(path, hello);
    QCOMPARE(reply.status, 503);
    QCOMPARE(reply.body, QByteArray("<html>"));
    QCOMPARE(anna.messages(lobby()).size(), 0);
}

void FaultsTest::loseAnswer() {
    Site site;
    Person anna(site, u"anna"_s);
    const Headers key{{"Idempotency-Key", "K"}};
    site.server().faults().loseAnswer("POST", path, attempts);
    QCOMPARE(anna.post(path, hello, key).status, 0);
    site.server().faults().clear();
    QCOMPARE(anna.messages(lobby()).size(), 1);
    // The client tries again, as it must.
    QCOMPARE(anna.post(path, hello, key).json["message"_L1]["id"_L1], anna.messages(lobby())[0]["id"_L1]);
    QCOMPARE(anna.messages(lobby()).size(), 1);
}

void FaultsTest::rulesFitByMethodPathAndCount() {
    Site site;
    Person anna(site, u"anna"_s);
    site.server().faults().answerWith("POST", path, 500, "{}", 2);
    site.server().faults().answerWith({}, u"/api/messenger/dev"_s, 502, "{}");
    QCOMPARE(anna.get(path).status, 200);
    QCOMPARE(anna.post(path, hello).status, 500);
    QCOMPARE(anna.post(path, hello).status, 500);
    QCOMPARE(anna.post(path, hello).status, 201);
    QCOMPARE(anna.get(u"devices"_s).status, 502);
    site.server().faults().drop({}, {});
    site.server().faults().clear();
    QCOMPARE(anna.get(u"devices"_s).status, 200);
}

void FaultsTest::closeSockets() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    Listener annas(site, anna);
    Listener berts(site, bert);
    site.server().closeEventSockets(anna.id);
    QTRY_VERIFY(!annas.isOpen());
    QVERIFY(!berts.has(u"messenger_message"_s));
    Listener again(site, anna);
    bert.say(lobby(), u"hi"_s);
    QVERIFY(!again.next(u"messenger_message"_s).isEmpty());
}

void FaultsTest::freezeAndThaw() {
    Site site;
    Person anna(site, u"anna"_s);
    Person bert(site, u"bert"_s);
    Listener annas(site, anna);
    Listener berts(site, bert);
    site.server().freezeEventSockets(anna.id);
    const QString message = bert.say(lobby(), u"hi"_s);
    annas.send({{"type"_L1, "read_receipt"_L1}, {"chat_id"_L1, lobby()}, {"message_id"_L1, message}});
    // Bert's socket answers, so whatever Anna's was to do would be done.
    QVERIFY(!berts.has(u"messenger_read_receipt"_s));
    QCOMPARE(anna.chat(lobby())["unread_count"_L1], QJsonValue(1));
    QVERIFY(annas.isOpen());
    QVERIFY(annas.events.isEmpty() || annas.events.last()["type"_L1] != "messenger_message"_L1);

    site.server().thawEventSockets(anna.id);
    QVERIFY(!annas.next(u"messenger_message"_s).isEmpty());
    QVERIFY(!berts.next(u"messenger_read_receipt"_s).isEmpty());
}

void FaultsTest::oversizedRequests_data() {
    QTest::addColumn<QString>("target");
    QTest::addColumn<qsizetype>("size");
    QTest::addColumn<int>("status");
    const qsizetype mebi = 1024LL * 1024;
    QTest::newRow("a full message") << path << mebi - 100 << 201;
    QTest::newRow("a little too much") << path << mebi << 413;
    QTest::newRow("far too much") << path << 20 * mebi << 413;
    QTest::newRow("far too much, nobody's") << u"/api/auth/login"_s << 5 * mebi << 413;
    QTest::newRow("far too much for an upload") << u"/api/messenger/files/upload"_s << 40 * mebi << 413;
}

void FaultsTest::oversizedRequests() {
    QFETCH(QString, target);
    QFETCH(qsizetype, size);
    QFETCH(int, status);
    Site site;
    Person anna(site, u"anna"_s);
    const Reply reply = anna.send("POST", target, R"({"content":")" + QByteArray(size, 'x') + "\"}");
    QCOMPARE(reply.status, status);
    if (status == 413)
        QCOMPARE(reply.error(), u"too_large"_s);
    QCOMPARE(anna.get(u"chats"_s).status, 200);
}

void FaultsTest::restartCutsWaitingRequests() {
    Site site;
    Person anna(site, u"anna"_s);
    site.server().faults().delay("POST", path, 60'000);
    QNetworkReply *waiting = anna.start("POST", path, hello, {});
    QNetworkReply *hashing =
        site.start("POST", u"/api/auth/login"_s, R"({"username":"anna","password":"x"})");
    QCOMPARE(anna.get(u"chats"_s).status, 200);
    site.restart();
    QCOMPARE(finish(waiting).status, 0);
    QVERIFY(finish(hashing).status != 200);
    QCOMPARE(anna.messages(lobby()).size(), 0);
}

QTEST_GUILESS_MAIN(FaultsTest)
#include "tst_homeserver_faults.moc"
