// SPDX-License-Identifier: MIT
#include "Client.h"
#include "HomeServer/Http/BodyBudget.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTcpSocket>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

namespace {

// A connection that says what no well-meaning client would.
class Raw : public QTcpSocket {
public:
    explicit Raw(const QUrl &url, const QByteArray &words = {}) {
        connectToHost(url.host(), static_cast<quint16>(url.port()));
        if (!QTest::qWaitFor([this] { return state() == ConnectedState; }, 5000))
            qFatal("no connection");
        write(words);
    }

    bool isOpen() const { return state() == ConnectedState; }

    // What has come when `count` answers are there, or the connection has ended.
    QByteArray answers(qsizetype count = 1) {
        (void)QTest::qWaitFor([&] { return peek(1 << 20).count("HTTP/1.1 ") >= count || !isOpen(); }, 5000);
        return readAll();
    }
};

// The program itself, with a folder and two ports of its own.
class Program : public QProcess {
public:
    explicit Program(const QString &data, const QStringList &more = {}, int descriptors = 0) {
        if (descriptors > 0)
            setChildProcessModifier([descriptors] {
                const auto most = static_cast<rlim_t>(descriptors);
                const rlimit limit{most, most};
                setrlimit(RLIMIT_NOFILE, &limit);
            });
        QProcess::start(QString::fromLocal8Bit(HOMESERVER_PROGRAM), QStringList{u"--data"_s, data} + more);
        while (!canReadLine() && waitForReadyRead(10'000)) {
        }
        const QList<QByteArray> words = readLine().trimmed().split(' ');
        if (words.size() != 3)
            return;
        http = QUrl(QString::fromLatin1(words[1].mid(5)));
        events = QUrl(QString::fromLatin1(words[2].mid(3)));
    }
    ~Program() override {
        terminate();
        waitForFinished();
    }

    // Of the processor, in ticks.
    qint64 timeUsed() const {
        QFile stat(u"/proc/%1/stat"_s.arg(processId()));
        if (!stat.open(QIODevice::ReadOnly))
            return 0;
        const QList<QByteArray> fields = stat.readAll().split(' ');
        return fields.value(13).toLongLong() + fields.value(14).toLongLong();
    }

    QUrl http;
    QUrl events;
};

QByteArray get(const QByteArray &path, const QByteArray &more = {}) {
    return "GET " + path + " HTTP/1.1\r\nHost: x\r\n" + more + "\r\n";
}

} // namespace

class StrangersTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void nobodySendsABodyWithoutAToken() {
        Company c;
        const QUrl url = c.site.server().httpUrl();
        for (const QByteArray path : {"/api/messenger/chats/lobby/voice-messages", "/api/messenger/chats",
                                      "/api/messenger/nothing"}) {
            Raw stranger(url, "POST " + path + " HTTP/1.1\r\nContent-Length: 900000\r\n\r\nx");
            const QByteArray answer = stranger.answers();
            QVERIFY2(answer.startsWith("HTTP/1.1 40"), answer);
            QTRY_VERIFY(!stranger.isOpen());
        }
    }

    void slowRequestsAreCutOff() {
        Company c([](Options &options) { options.patience = 300; });
        const QUrl url = c.site.server().httpUrl();
        const QByteArray head = "POST /api/auth/login HTTP/1.1\r\nContent-Length: 100\r\n\r\n";
        Raw silent(url);
        Raw halfAHead(url, "GET / HTTP/1.1\r\nHost:");
        Raw halfABody(url, head + "{");
        for (Raw *slow : {&silent, &halfAHead, &halfABody})
            QTRY_VERIFY(!slow->isOpen());
        // Slow, but going on.
        Raw patient(url, head);
        for (int i = 0; i < 5; ++i) {
            QTest::qWait(100);
            patient.write(QByteArray(20, ' '));
        }
        QVERIFY(patient.answers().startsWith("HTTP/1.1 400"));
    }

    void unfinishedBytesAreBounded() {
        BodyBudget budget(1000, 600);
        const QHostAddress one(u"10.0.0.1"_s);
        const QHostAddress other(u"10.0.0.2"_s);
        QVERIFY(budget.take(one, 600));
        QVERIFY(!budget.take(one, 1));
        QVERIFY(budget.take(other, 400));
        QVERIFY(!budget.take(other, 1));
        budget.giveBack(one, 600);
        QVERIFY(budget.take(other, 200));
    }

    void silentConnectionsMakeRoom() {
        Company c([](Options &options) { options.connections.perAddress = 50; });
        Listener before(c.site, c.anna);
        std::vector<std::unique_ptr<Raw>> crowd;
        for (int i = 0; i < 120; ++i)
            crowd.push_back(
                std::make_unique<Raw>(i % 2 ? c.site.server().webSocketUrl() : c.site.server().httpUrl()));
        QElapsedTimer timer;
        timer.start();
        const Person guest = Person::signIn(c.site, u"bert"_s, u"phone"_s);
        Listener after(c.site, guest);
        c.bert.say(c.chat, u"hi"_s);
        QVERIFY(!before.next(u"messenger_message"_s).isEmpty());
        QVERIFY(timer.elapsed() < 3000);
        QVERIFY(std::ranges::count_if(crowd, [](const auto &raw) { return raw->isOpen(); }) < 110);
    }

    void withoutDescriptorsItRests() {
        const QTemporaryDir folder;
        Program program(folder.path(), {}, 48);
        std::vector<std::unique_ptr<Raw>> crowd;
        for (int i = 0; i < 80; ++i)
            crowd.push_back(std::make_unique<Raw>(program.http));
        const qint64 before = program.timeUsed();
        QTest::qWait(1000);
        QVERIFY(program.timeUsed() - before < 30);
        crowd.clear();
        Raw later(program.http, get("/api/messenger/chats"));
        QVERIFY(later.answers().startsWith("HTTP/1.1 401"));
    }

    void requestsAreReadStrictly() {
        Company c;
        const QUrl url = c.site.server().httpUrl();
        const QByteArray path = "/api/messenger/chats";
        for (const auto &[words, status] :
             {std::pair(get(path, "X: " + QByteArray(200'000, 'x') + "\r\n"), "431"),
              {get(path, QByteArray("A: b\r\n").repeated(200)), "431"},
              {get(path, "Content-Length: 1\r\nContent-Length: 2\r\n"), "400"},
              {get(path, "Content-Length: -1\r\n"), "400"},
              {get(path, "Content-Length: +1\r\n"), "400"},
              {get(path, "Transfer-Encoding: chunked\r\n"), "411"},
              {get(path, "No colon\r\n"), "400"},
              {get(path, "A : b\r\n"), "400"},
              {get("relative"), "400"},
              {"GET /\r\n\r\n", "400"},
              {"GET / HTTP/2.0\r\n\r\n", "501"},
              {"\x16\x03\x01\r\n\r\n", "400"}}) {
            Raw raw(url, words);
            const QByteArray answer = raw.answers();
            QVERIFY2(answer.startsWith("HTTP/1.1 " + QByteArray(status)), words.left(60) + answer);
        }
        // Several at once are answered in their order, the slow one too.
        const QByteArray login = R"({"username":"anna","password":"secret-1"})";
        Raw raw(url, "POST /api/auth/login HTTP/1.1\r\nContent-Length: " + QByteArray::number(login.size()) +
                         "\r\n\r\n" + login + get(path) + get("/nowhere"));
        const QByteArray answers = raw.answers(3);
        const qsizetype first = answers.indexOf(" 200 ");
        const qsizetype second = answers.indexOf(" 401 ");
        QVERIFY2(first > 0 && second > first && answers.indexOf(" 404 ") > second, answers);
        QCOMPARE(answers.count("X-Content-Type-Options: nosniff"), 3);
        Raw waiting(url,
                    "POST /api/auth/login HTTP/1.1\r\nExpect: 100-continue\r\nContent-Length: 2\r\n\r\n");
        QVERIFY(waiting.answers().startsWith("HTTP/1.1 100 "));
        waiting.write("{}");
        QVERIFY(waiting.answers().startsWith("HTTP/1.1 400 "));
    }

    void folderIsPrivateAndHasOneServer() {
        const QTemporaryDir folder;
        const QString data = folder.filePath(u"data"_s);
        Program program(data);
        struct stat found {};
        for (const char *name : {"", "/homeserver.sqlite", "/files"}) {
            QCOMPARE(stat((data + QLatin1StringView(name)).toUtf8().constData(), &found), 0);
            QCOMPARE(found.st_mode & 077U, 0U);
        }
        Program second(data);
        QVERIFY(second.http.isEmpty());
        QVERIFY(second.state() == QProcess::NotRunning || second.waitForFinished());
        QCOMPARE(second.exitCode(), 1);
        QCOMPARE(second.readAllStandardError().count('\n'), 1);
        program.kill(); // and a crash leaves no lock behind
        program.waitForFinished();
        Program third(data);
        QVERIFY(!third.http.isEmpty());
    }

    void signalsStayInTheirChat() {
        Company c;
        Listener annas(c.site, c.anna);
        Listener berts(c.site, c.bert);
        Listener carls(c.site, c.carl);
        const auto offer = [](Listener &from, const Person &to, const QString &chat, qsizetype size = 1) {
            from.send({{"type"_L1, "call_offer"_L1},
                       {"to"_L1, QString::number(to.id)},
                       {"chat_id"_L1, chat},
                       {"sdp"_L1, QString(size, u'x')}});
        };
        offer(carls, c.anna, c.chat); // not his chat
        offer(annas, c.carl, c.chat); // not the other's
        offer(annas, c.bert, u"nowhere"_s);
        offer(annas, c.bert, c.chat, 200'000);
        QVERIFY(!carls.has({}) && !annas.has(u"call_offer"_s));
        QVERIFY(!carls.has(u"call_offer"_s) && !berts.has(u"call_offer"_s));
        offer(annas, c.bert, c.chat);
        QVERIFY(!berts.next(u"call_offer"_s).isEmpty());
    }

    void privateBotIsOutOfReach() {
        Company c;
        const QString bot = c.anna.post(u"bots"_s, {{"name"_L1, "Mine"_L1}}).text("bot.id");
        for (const QString &type : {u"direct"_s, u"group"_s})
            QCOMPARE(
                c.bert.post(u"chats"_s, {{"type"_L1, type}, {"participants"_L1, QJsonArray{bot.toInt()}}})
                    .status,
                403);
        QVERIFY(!c.anna.directChatWith(bot.toLongLong()).isEmpty());
    }

    void replacedTokenLosesItsSocket() {
        Company c;
        Listener before(c.site, c.anna);
        const Person again = Person::signIn(c.site, u"anna"_s, u"device-1"_s);
        QTRY_VERIFY(!before.isOpen());
        Listener after(c.site, again);
        QVERIFY(!after.has(u"x"_s));
    }

    void keysAndGroupsHaveBrakes() {
        Company c;
        QJsonArray keys;
        for (int i = 0; i < 50; ++i)
            keys.append(QString::fromLatin1(QByteArray::number(i).toBase64()));
        c.anna.post(u"keys/upload"_s, {{"identity_key"_L1, "aWQ="_L1},
                                       {"signed_pre_key"_L1, "cHJl"_L1},
                                       {"signed_pre_key_signature"_L1, "c2ln"_L1},
                                       {"one_time_pre_keys"_L1, keys}});
        for (int i = 0; i < 50; ++i) // never without a bundle
            QCOMPARE(c.bert.get(u"keys/%1"_s.arg(c.anna.id)).text("identity_key"), u"aWQ="_s);
        QVERIFY(c.anna.get(u"keys/%1/count"_s.arg(c.anna.id)).at("pre_keys_remaining").toInt() >= 40);
        QVERIFY(c.carl.get(u"keys/%1"_s.arg(c.anna.id)).json.contains("one_time_pre_key"_L1));

        const auto group = [&](Person &person, const Person &other) {
            return person
                .post(u"chats"_s, {{"type"_L1, "group"_L1}, {"participants"_L1, QJsonArray{other.id}}})
                .status;
        };
        int status = 201;
        for (int i = 0; i < 100 && status == 201; ++i)
            status = group(c.bert, c.carl);
        QCOMPARE(status, 429);
        c.anna.post(u"contacts/request"_s, {{"contact_id"_L1, c.bert.id}});
        c.bert.post(u"contacts/request"_s, {{"contact_id"_L1, c.anna.id}});
        QCOMPARE(group(c.bert, c.anna), 201); // a contact
        c.site.now += 3601;
        QCOMPARE(group(c.bert, c.carl), 201);
    }
};

QTEST_GUILESS_MAIN(StrangersTest)
#include "tst_homeserver_strangers.moc"
