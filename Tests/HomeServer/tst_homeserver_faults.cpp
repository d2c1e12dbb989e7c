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
const Headers key{{"Idempotency-Key", "K"}};

// More than the HTTP library makes of one request by itself.
constexpr int attempts = 20;

} // namespace

class FaultsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void scriptedFaults() {
        Site site;
        Person anna(site, u"anna"_s);
        FaultScript &faults = site.server().faults();
        const auto count = [&] { return anna.messages(lobby()).size(); };

        faults.delay("POST", path, 300);
        QElapsedTimer timer;
        timer.start();
        QNetworkReply *late = anna.start("POST", path, hello, {});
        QCOMPARE(count(), 0); // overtakes it
        QCOMPARE(finish(late).status, 201);
        QVERIFY(timer.elapsed() >= 300);

        faults.drop("POST", path, attempts);
        QCOMPARE(anna.post(path, hello).status, 0);
        faults.clear();
        faults.answerWith("POST", path, 503, "<html>");
        QCOMPARE(anna.post(path, hello).body, QByteArray("<html>"));
        QCOMPARE(count(), 1);

        faults.duplicate("POST", path, 2);
        const QString second = anna.post(path, hello).text("message.id");
        QCOMPARE(anna.messages(lobby())[2]["id"_L1].toString(), second);
        // With a key the second run finds the first.
        anna.post(path, hello, key);
        QCOMPARE(count(), 4);

        faults.loseAnswer("POST", path, attempts);
        const Headers another{{"Idempotency-Key", "another"}};
        QCOMPARE(anna.post(path, hello, another).status, 0);
        faults.clear();
        // The client tries again, as it must.
        const QString again = anna.post(path, hello, another).text("message.id");
        QCOMPARE(anna.messages(lobby())[4]["id"_L1].toString(), again);
        QCOMPARE(count(), 5);
    }

    void rulesFitByMethodPathAndCount() {
        Site site;
        Person anna(site, u"anna"_s);
        site.server().faults().answerWith("POST", path, 500, "{}", 2);
        site.server().faults().answerWith({}, u"/api/messenger/dev"_s, 502, "{}");
        QCOMPARE(anna.get(path).status, 200);
        for (const int status : {500, 500, 201})
            QCOMPARE(anna.post(path, hello).status, status);
        QCOMPARE(anna.get(u"devices"_s).status, 502);
        site.server().faults().drop({}, {});
        site.server().faults().clear();
        QCOMPARE(anna.get(u"devices"_s).status, 200);
    }

    void socketsCloseFreezeAndThaw() {
        Company c;
        Listener annas(c.site, c.anna);
        Listener berts(c.site, c.bert);
        c.site.server().freezeEventSockets(c.anna.id);
        const QString message = c.bert.say(lobby(), u"hi"_s);
        annas.send({{"type"_L1, "read_receipt"_L1}, {"chat_id"_L1, lobby()}, {"message_id"_L1, message}});
        // Bert's socket answers, so whatever Anna's was to do would be done.
        QVERIFY(!berts.has(u"messenger_read_receipt"_s));
        QCOMPARE(c.anna.chat(lobby())["unread_count"_L1], QJsonValue(1));
        QVERIFY(annas.isOpen());
        QVERIFY(annas.events.isEmpty() || annas.events.last()["type"_L1] != "messenger_message"_L1);
        c.site.server().thawEventSockets(c.anna.id);
        QVERIFY(!annas.next(u"messenger_message"_s).isEmpty());
        QVERIFY(!berts.next(u"messenger_read_receipt"_s).isEmpty());

        c.site.server().closeEventSockets(c.anna.id);
        QTRY_VERIFY(!annas.isOpen());
        QVERIFY(!berts.has(u"messenger_message"_s));
        Listener again(c.site, c.anna);
        c.bert.say(lobby(), u"hi"_s);
        QVERIFY(!again.next(u"messenger_message"_s).isEmpty());
    }

    void oversizedRequests() {
        Site site;
        Person anna(site, u"anna"_s);
        const qsizetype mebi = 1024LL * 1024;
        for (const auto &[target, size, status] : {std::tuple(path, mebi - 100, 201),
                                                   {path, mebi, 413},
                                                   {path, 20 * mebi, 413},
                                                   {u"/api/auth/login"_s, 5 * mebi, 413},
                                                   {u"/api/messenger/files/upload"_s, 40 * mebi, 413}}) {
            const Reply reply = anna.send("POST", target, "{\"content\":\"" + QByteArray(size, 'x') + "\"}");
            QCOMPARE(reply.status, status);
            QCOMPARE(reply.error(), status == 413 ? u"too_large"_s : QString());
            QCOMPARE(anna.get(u"chats"_s).status, 200);
        }
    }

    void restartCutsWaitingRequests() {
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
};

QTEST_GUILESS_MAIN(FaultsTest)
#include "tst_homeserver_faults.moc"
