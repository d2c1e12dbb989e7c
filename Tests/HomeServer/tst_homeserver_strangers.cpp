// SPDX-License-Identifier: MIT
#include "Client.h"
#include "HomeServer/Federation/OutwardRequest.h"
#include "HomeServer/Http/BodyBudget.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QTcpServer>
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
        QVERIFY(program.timeUsed() - before < 10);
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

    void uploadsNeedAMemberNearby() {
        Company c;
        const Headers form{{"Content-Type", "multipart/form-data; boundary=B"}};
        const auto upload = [&](const QString &chat) {
            return c.site.send("POST", u"files/upload"_s,
                               "--B\r\nContent-Disposition: form-data; name=\"chat_id\"\r\n\r\n" +
                                   chat.toUtf8() +
                                   "\r\n--B\r\nContent-Disposition: form-data; name=\"file\"; "
                                   "filename=\"a.txt\"\r\n\r\nforget these bytes\r\n--B--\r\n",
                               form);
        };
        QCOMPARE(upload(lobby()).status, 403); // nobody has been there
        const Reply kept = upload(c.chat);
        QCOMPARE(kept.status, 201);
        const QString message = c.anna.say(c.chat, u"file:a.txt:"_s + kept.text("path"));
        const Reply lost = upload(c.chat);
        c.site.now += 3601;
        QCOMPARE(upload(c.chat).status, 201);
        QCOMPARE(c.site.send("GET", u'/' + lost.text("path")).status, 404);
        QCOMPARE(c.site.send("GET", u'/' + kept.text("path")).status, 200);
        QCOMPARE(c.anna.send("DELETE", u"messages/"_s + message).status, 200);
        QCOMPARE(c.site.send("GET", u'/' + kept.text("path")).status, 404);
        c.site.now += 26 * 3600;
        QCOMPARE(upload(c.chat).status, 403);
    }

    void brakesOutliveARestart() {
        Company c;
        const QByteArray wrong = R"({"username":"anna","password":"guess-1"})";
        for (const int status : {401, 401, 401, 401, 401, 429})
            QCOMPARE(c.site.send("POST", u"/api/auth/login"_s, wrong).status, status);
        c.site.restart();
        QCOMPARE(c.site.send("POST", u"/api/auth/login"_s, wrong).status, 429);
    }

    void namesAreHonest() {
        Company c;
        const auto join = [&](const char16_t *name, const char16_t *shown = u"") {
            const QJsonObject body{{"username"_L1, QString::fromUtf16(name)},
                                   {"display_name"_L1, QString::fromUtf16(shown)},
                                   {"password"_L1, "secret-1"_L1}};
            return c.site.send("POST", u"/api/auth/register"_s, QJsonDocument(body).toJson()).status;
        };
        for (const auto &[name, status] : {std::pair(u"аnna", 400), // one Cyrillic letter
                                           {u"аппа", 201},
                                           {u"anna ", 400},
                                           {u"an\u00a0na", 400},
                                           {u"an\u200bna", 400},
                                           {u"anna\u3164", 400},
                                           {u"\u2800", 400},
                                           {u"ANNA", 409},
                                           {u"cаrl", 400},
                                           {u"scope", 201},
                                           {u"ѕсоре", 409},
                                           {u"car1", 409}, // looks like carl
                                           {u"BOT_x", 400},
                                           {u"b0t_x", 400},
                                           {u"Ai_x", 400}})
            QVERIFY2(join(name) == status, qPrintable(QString::fromUtf16(name)));
        QCOMPARE(join(u"reza", u"می\u200cخواهم"), 201);
        QCOMPARE(join(u"family", u"👨\u200d👩\u200d👧"), 201);
        QCOMPARE(join(u"turned", u"abc\u202edef"), 400);
        QCOMPARE(join(u"blank", u"\u200d\u200c"), 400);
        QCOMPARE(
            c.site.send("POST", u"/api/auth/register"_s, R"({"username":"d","password":"12345"})").status,
            400);
    }

    void registrationCanBeClosed() {
        const QByteArray newcomer = R"({"username":"dora","password":"secret-1","invite_code":"guess"})";
        for (const Registration rule : {Registration::Closed, Registration::Invited}) {
            Site site([rule](Options &options) { options.registration = rule; });
            QCOMPARE(site.send("POST", u"/api/auth/register"_s, newcomer).error(), u"registration_closed"_s);
        }
    }

    void addressesOfUsersArePublic() {
        for (const auto &[address, open] : {std::pair(u"127.0.0.1"_s, false),
                                            {u"10.1.2.3"_s, false},
                                            {u"169.254.169.254"_s, false},
                                            {u"172.31.0.1"_s, false},
                                            {u"192.168.0.1"_s, false},
                                            {u"100.64.0.1"_s, false},
                                            {u"0.0.0.0"_s, false},
                                            {u"255.255.255.255"_s, false},
                                            {u"::1"_s, false},
                                            {u"::"_s, false},
                                            {u"fe80::1"_s, false},
                                            {u"fd00::1"_s, false},
                                            {u"::ffff:127.0.0.1"_s, false},
                                            {u"64:ff9b::7f00:1"_s, false},
                                            {u"2002:7f00:1::"_s, false},
                                            {u"1.1.1.1"_s, true},
                                            {u"172.32.0.1"_s, true},
                                            {u"2606:4700::1111"_s, true}})
            QVERIFY2(isPublic(QHostAddress(address)) == open, qPrintable(address));
        Company c;
        QTcpServer inside;
        inside.listen(QHostAddress::LocalHost);
        const QString url = u"http://localhost:%1/secret?x=1"_s.arg(inside.serverPort());
        c.anna.post(u"federation/peers"_s, {{"domain"_L1, "in.example"_L1}, {"base_url"_L1, url}});
        QCOMPARE(c.anna.post(u"federation/peers/in.example/ping"_s).text("status"), u"offline"_s);
        QVERIFY(!inside.hasPendingConnections());
        QCOMPARE(c.bert.get(u"federation/peers"_s).count("peers"), 0);
    }

    void deletedMeansDeleted() {
        Company c;
        const Headers key{{"Idempotency-Key", "K"}};
        const QString path = u"chats/%1/messages"_s.arg(c.chat);
        const QString first = c.anna.post(path, {{"content"_L1, "xylophone one"_L1}}, key).text("message.id");
        const QString second = c.anna.say(c.chat, u"zeppelin two"_s);
        c.carl.say(lobby(), u"quagmire three"_s);
        QVERIFY(onDisk(c.site, "xylophone") && onDisk(c.site, "quagmire"));
        c.anna.send("PATCH", u"messages/"_s + first, R"({"content":"nothing"})");
        c.anna.send("DELETE", u"messages/"_s + second);
        c.carl.send("DELETE", u"users/me"_s, R"({"password":"secret-1"})");
        for (const char *word : {"xylophone", "zeppelin", "quagmire"})
            QVERIFY2(!onDisk(c.site, word), word);
        QCOMPARE(c.anna.post(path, {{"content"_L1, "xylophone one"_L1}}, key).text("message.content"),
                 u"nothing"_s);
        c.anna.send("DELETE", u"messages/"_s + first);
        QCOMPARE(c.anna.post(path, {{"content"_L1, "xylophone one"_L1}}, key).status, 410);
    }

private:
    static bool onDisk(const Site &site, const QByteArray &bytes) {
        QDirIterator files(site.dataFolder(), QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (file.open(QIODevice::ReadOnly) && file.readAll().toLower().contains(bytes))
                return true;
        }
        return false;
    }
};

QTEST_GUILESS_MAIN(StrangersTest)
#include "tst_homeserver_strangers.moc"
