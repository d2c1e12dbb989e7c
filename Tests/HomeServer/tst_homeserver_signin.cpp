// SPDX-License-Identifier: MIT
#include "Client.h"

#include <QTest>

using namespace orvane::homeserver;
using namespace orvane::homeserver::test;
using namespace Qt::StringLiterals;

class SignInTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void requests_data();
    void requests();
    void answerHasWhatTheClientReads();
    void sameNameInAnotherCaseIsTaken();
    void robotsCannotSignIn();
    void failuresCloseTheDoorForAMinute();
    void manyGuessesAtOnceDoNotSlipThrough();
    void surplusDeviceDies();
    void survivesRestart();
    void secretsAreNotInTheFile();
};

void SignInTest::requests_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");

    const QString in = u"/api/auth/login"_s;
    const QString up = u"/api/auth/register"_s;
    const QByteArray longName(65, 'n');
    const QByteArray deep = QByteArray(100'000, '[');
    QTest::newRow("empty body") << up << QByteArray() << 400 << u"bad_json"_s;
    QTest::newRow("half a JSON") << up << QByteArray(R"({"username":"a)") << 400 << u"bad_json"_s;
    QTest::newRow("a list") << up << QByteArray("[]") << 400 << u"bad_json"_s;
    QTest::newRow("deep nesting") << up << deep << 400 << u"bad_json"_s;
    QTest::newRow("bad UTF-8") << up << QByteArray("{\"username\":\"\xff\xfe\",\"password\":\"p\"}") << 400
                               << u"bad_json"_s;
    QTest::newRow("no name") << up << QByteArray(R"({"password":"p"})") << 400 << u"bad_request"_s;
    QTest::newRow("number as name") << up << QByteArray(R"({"username":1,"password":"p"})") << 400
                                    << u"bad_request"_s;
    QTest::newRow("no password") << up << QByteArray(R"({"username":"a"})") << 400 << u"bad_request"_s;
    QTest::newRow("empty password") << up << QByteArray(R"({"username":"a","password":""})") << 400
                                    << u"bad_request"_s;
    QTest::newRow("long name") << up << R"({"username":")" + longName + R"(","password":"p"})" << 400
                               << u"bad_request"_s;
    QTest::newRow("blank name") << up << QByteArray(R"({"username":"  ","password":"p"})") << 400
                                << u"bad_request"_s;
    QTest::newRow("line break") << up << QByteArray(R"({"username":"a\nb","password":"p"})") << 400
                                << u"bad_request"_s;
    QTest::newRow("NUL") << up << QByteArray(R"({"username":"a\u0000b","password":"p"})") << 400
                         << u"bad_request"_s;
    QTest::newRow("direction mark") << up << QByteArray(R"({"username":"a\u202eb","password":"p"})") << 400
                                    << u"bad_request"_s;
    QTest::newRow("robot's name") << up << QByteArray(R"({"username":"Bot_x","password":"p"})") << 400
                                  << u"bad_request"_s;
    QTest::newRow("display name of another type")
        << up << QByteArray(R"({"username":"a","password":"p","display_name":7})") << 400 << u"bad_request"_s;
    QTest::newRow("device of another type")
        << up << QByteArray(R"({"username":"a","password":"p","device_id":7})") << 400 << u"bad_request"_s;
    QTest::newRow("good name with blanks")
        << up << QByteArray(R"({"username":"Жанна д'Арк 😀","password":"p"})") << 201 << QString();
    QTest::newRow("unknown name") << in << QByteArray(R"({"username":"nobody","password":"p"})") << 401
                                  << u"invalid_credentials"_s;
    QTest::newRow("login with a number")
        << in << QByteArray(R"({"username":"a","password":5})") << 400 << u"bad_request"_s;
    QTest::newRow("no such path") << u"/api/auth/nothing"_s << QByteArray("{}") << 404 << u"not_found"_s;
    QTest::newRow("traversal") << u"/api/auth/..%2Flogin"_s << QByteArray("{}") << 404 << u"not_found"_s;
}

void SignInTest::requests() {
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    QFETCH(QString, error);
    Site site;
    const Reply reply = site.send("POST", path, body);
    QCOMPARE(reply.status, status);
    QCOMPARE(reply.error(), error);
}

void SignInTest::answerHasWhatTheClientReads() {
    Site site;
    Reply reply =
        site.send("POST", u"/api/auth/register"_s,
                  R"({"username":"anna","password":"p","display_name":"Anna K.","device_id":"d-7"})");
    QCOMPARE(reply.status, 201);
    for (int round = 0; round < 2; ++round) {
        QVERIFY(reply.json["token"_L1].toString().size() >= 40);
        QCOMPARE(reply.json["user"_L1]["id"_L1].type(), QJsonValue::Double);
        QCOMPARE(reply.json["user"_L1]["username"_L1], QJsonValue("anna"_L1));
        QCOMPARE(reply.json["user"_L1]["display_name"_L1], QJsonValue("Anna K."_L1));
        QCOMPARE(reply.json["device"_L1]["id"_L1], QJsonValue("d-7"_L1));
        QVERIFY(reply.json["sync_cursor"_L1].isDouble());
        QVERIFY(reply.json["max_devices"_L1].toInt() > 0);
        reply = site.send("POST", u"/api/auth/login"_s,
                          R"({"username":"anna","password":"p","device_id":"d-7"})");
        QCOMPARE(reply.status, 200);
    }
}

void SignInTest::sameNameInAnotherCaseIsTaken() {
    Site site;
    const Person anna(site, u"Änna"_s);
    // The same letters: another case, and the accent apart from its letter.
    for (const auto *name : {u"änna", u"A\u0308nna"}) {
        const Reply reply =
            site.send("POST", u"/api/auth/register"_s,
                      u"{\"username\":\"%1\",\"password\":\"p\"}"_s.arg(QString::fromUtf16(name)).toUtf8());
        QCOMPARE(reply.status, 409);
        QCOMPARE(reply.error(), u"username_taken"_s);
    }
}

void SignInTest::robotsCannotSignIn() {
    Site site;
    for (const auto *password : {"", "p", "null"}) {
        const Reply reply =
            site.send("POST", u"/api/auth/login"_s,
                      QByteArray(R"({"username":"bot_echo","password":")") + password + "\"}");
        QVERIFY(reply.status == 401 || reply.status == 400);
    }
}

void SignInTest::failuresCloseTheDoorForAMinute() {
    Site site;
    const Person anna(site, u"anna"_s);
    const Person bert(site, u"bert"_s);
    const QByteArray wrong = R"({"username":"Anna","password":"wrong"})";
    for (int i = 0; i < 5; ++i)
        QCOMPARE(site.send("POST", u"/api/auth/login"_s, wrong).status, 401);
    QCOMPARE(site.send("POST", u"/api/auth/login"_s, wrong).error(), u"too_many_attempts"_s);
    const QByteArray right = R"({"username":"anna","password":"secret-1"})";
    QCOMPARE(site.send("POST", u"/api/auth/login"_s, right).status, 429);
    // Nobody else is shut out.
    QCOMPARE(site.send("POST", u"/api/auth/login"_s, R"({"username":"bert","password":"secret-1"})").status,
             200);
    site.now += 61;
    QCOMPARE(site.send("POST", u"/api/auth/login"_s, right).status, 200);
}

void SignInTest::manyGuessesAtOnceDoNotSlipThrough() {
    Site site;
    const Person anna(site, u"anna"_s);
    QList<QNetworkReply *> replies;
    for (int i = 0; i < 12; ++i)
        replies.append(site.start("POST", u"/api/auth/login"_s, R"({"username":"anna","password":"wrong"})"));
    int checked = 0;
    for (QNetworkReply *reply : replies)
        checked += finish(reply).status == 401 ? 1 : 0;
    QCOMPARE(checked, 5);
}

void SignInTest::surplusDeviceDies() {
    Site site;
    Person first(site, u"anna"_s, u"first"_s);
    for (int i = 0; i < 10; ++i) {
        site.now += 1;
        Person::signIn(site, u"anna"_s, u"later-%1"_s.arg(i));
    }
    QCOMPARE(first.get(u"chats"_s).status, 401);
    Person again = Person::signIn(site, u"anna"_s, u"later-9"_s);
    QCOMPARE(again.get(u"devices"_s).json["devices"_L1].toArray().size(), 10);
}

void SignInTest::survivesRestart() {
    Site site;
    Person anna(site, u"anna"_s);
    site.restart();
    QCOMPARE(anna.get(u"chats"_s).status, 200);
    QCOMPARE(Person::signIn(site, u"anna"_s, u"device-2"_s).id, anna.id);
    QCOMPARE(site.send("POST", u"/api/auth/register"_s, R"({"username":"anna","password":"p"})").status, 409);
}

void SignInTest::secretsAreNotInTheFile() {
    Site site;
    const Person anna(site, u"anna"_s);
    QByteArray everything;
    for (const QString &name : {u"homeserver.sqlite"_s, u"homeserver.sqlite-wal"_s}) {
        QFile file(site.dataFolder() + u'/' + name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        everything += file.readAll();
    }
    QVERIFY(everything.contains("anna"));
    QVERIFY(!everything.contains("secret-1"));
    QVERIFY(!everything.contains(anna.token.toUtf8()));
}

QTEST_GUILESS_MAIN(SignInTest)
#include "tst_homeserver_signin.moc"
