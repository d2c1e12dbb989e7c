// SPDX-License-Identifier: MIT
#include "Server/HttpAnswer.h"
#include "Server/HttpTransport.h"
#include "Support/Await.h"
#include "Support/ScriptedHttpServer.h"
#include "Support/SignedInSession.h"
#include "Support/TestMain.h"

#include <QTcpServer>
#include <QTcpSocket>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

const QString path = u"/api/messenger/x"_s;
constexpr qsizetype answerLimit = 100'000;

/// "body" or the name of the failure in brackets.
QString told(const Outcome<QByteArray> &outcome) {
    return outcome.value ? QString::fromUtf8(*outcome.value) : u'<' + outcome.failure + u'>';
}

} // namespace

class TestHttpTransport : public QObject {
    Q_OBJECT

public:
    static int child(const QStringList &arguments);

private Q_SLOTS:
    void init();
    void requestsGoOutExactly_data();
    void requestsGoOutExactly();
    void pathsGoOutAsGiven_data();
    void pathsGoOutAsGiven();
    void tokenIsReadAtEachRequest();
    void additionalHeadersWin();
    void bodiesKeepTheirTypes();
    void statusDecidesBetweenBodyAndCode_data();
    void statusDecidesBetweenBodyAndCode();
    void brokenAnswersAreTransportErrors_data();
    void brokenAnswersAreTransportErrors();
    void answersHaveALimit_data();
    void answersHaveALimit();
    void anAnswerWithoutEndCostsLittleMemory();
    void whatActsIsSentOnce_data();
    void whatActsIsSentOnce();
    void actingRequestsFollowRedirects();
    void nobodyListeningIsATransportError();
    void redirectsStayWithinOneOrigin_data();
    void redirectsStayWithinOneOrigin();
    void lateAnswersReachTheirOwnCallers();
    void severalConnectionsServeOverlappingRequests();
    void largeBodiesArriveWhole();
    void brokenBaseStopsTheProcess_data();
    void brokenBaseStopsTheProcess();
    void strangeBaseIsATransportError_data();
    void strangeBaseIsATransportError();

private:
    Outcome<QByteArray> get(const ScriptedAnswer &answer) {
        m_server.answerNext(answer);
        return outcomeOf(m_http->get(path));
    }

    ScriptedHttpServer m_server;
    std::unique_ptr<SignedInSession> m_signedIn;
    std::unique_ptr<HttpTransport> m_http;
};

/// One request: to the given base, or else to a server that never comes to an end.
int TestHttpTransport::child(const QStringList &arguments) {
    SignedInSession signedIn;
    if (arguments.isEmpty()) {
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        QObject::connect(&server, &QTcpServer::newConnection, [&] {
            QTcpSocket *socket = server.nextPendingConnection();
            const auto goOn = [socket] { socket->write(QByteArray(1'000'000, 'x')); };
            QObject::connect(socket, &QTcpSocket::bytesWritten, socket, [socket, goOn] {
                if (socket->bytesToWrite() == 0)
                    goOn();
            });
            socket->write("HTTP/1.1 200 OK\r\n\r\n");
        });
        const rlimit limit{1'000'000'000, 1'000'000'000};
        setrlimit(RLIMIT_AS, &limit);
        HttpTransport http(QString("http://127.0.0.1:%1").arg(server.serverPort()), signedIn.session);
        return told(outcomeOf(http.get(path))) == "<transport>" ? 0 : 1;
    }
    HttpTransport http(arguments.at(0), signedIn.session, 1000);
    outcomeOf(http.get(arguments.at(1)));
    return 0;
}

void TestHttpTransport::init() {
    m_server.reset();
    m_signedIn = std::make_unique<SignedInSession>();
    m_http = std::make_unique<HttpTransport>(m_server.base(), m_signedIn->session);
}

void TestHttpTransport::requestsGoOutExactly_data() {
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QJsonObject>("body");
    /// Null for a request without one.
    QTest::addColumn<QByteArray>("bytes");
    const QJsonObject one{{u"k"_s, 1}};
    QTest::newRow("get") << QByteArray("GET") << QJsonObject() << QByteArray();
    for (const char *method : {"POST", "PATCH", "DELETE"}) {
        QTest::addRow("%s", method) << QByteArray(method) << one << QByteArray(R"({"k":1})");
        QTest::addRow("%s nothing", method) << QByteArray(method) << QJsonObject() << QByteArray("{}");
    }
}

void TestHttpTransport::requestsGoOutExactly() {
    QFETCH(QByteArray, method);
    QFETCH(QJsonObject, body);
    QFETCH(QByteArray, bytes);
    const auto request = [&] {
        return method == "GET"     ? m_http->get(path)
               : method == "POST"  ? m_http->post(path, body)
               : method == "PATCH" ? m_http->patch(path, body)
                                   : m_http->del(path, body);
    };
    QCOMPARE(told(outcomeOf(request())), u"{}"_s);
    const RecordedRequest sent = m_server.lastRequest();
    QCOMPARE(sent.method, method);
    QCOMPARE(sent.target, path.toUtf8());
    QCOMPARE(sent.headers.value("authorization"), "Bearer t0k");
    QCOMPARE(sent.headers.value("content-type"),
             bytes.isNull() ? QByteArray() : QByteArray("application/json"));
    QCOMPARE(sent.body, bytes);
    m_signedIn->session.logout();
    QCOMPARE(told(outcomeOf(request())), u"{}"_s);
    QVERIFY(!m_server.lastRequest().headers.contains("authorization"));
    QCOMPARE(m_server.requests().size(), 2);
}

void TestHttpTransport::pathsGoOutAsGiven_data() {
    QTest::addColumn<QString>("given");
    for (const char *given : {"/", "/a/b?x=1&y=2", "/a%2Fb%20c?q=%26%3D%25", "/a//b/", "/a?x=+1&y=a:b@c/d?e",
                              "/a;b=c,d", "/%D0%B6", "/~a!$'()*"})
        QTest::newRow(given) << QString::fromLatin1(given);
}

void TestHttpTransport::pathsGoOutAsGiven() {
    QFETCH(QString, given);
    outcomeOf(m_http->get(given));
    QCOMPARE(m_server.lastRequest().target, given.toUtf8());
}

void TestHttpTransport::tokenIsReadAtEachRequest() {
    outcomeOf(m_http->get(path));
    m_signedIn->session.token = u"next"_s;
    outcomeOf(m_http->get(path));
    QCOMPARE(m_server.lastRequest().headers.value("authorization"), "Bearer next");
}

void TestHttpTransport::additionalHeadersWin() {
    const HttpTransport::Headers headers{{u"Idempotency-Key"_s, u"m-1"_s},
                                         {u"Authorization"_s, u"other"_s},
                                         {u"Content-Type"_s, u"application/other"_s}};
    outcomeOf(m_http->post(path, {}, headers));
    QCOMPARE(m_server.lastRequest().headers.value("idempotency-key"), "m-1");
    QCOMPARE(m_server.lastRequest().headers.value("authorization"), "other");
    QCOMPARE(m_server.lastRequest().headers.value("content-type"), "application/other");
}

void TestHttpTransport::bodiesKeepTheirTypes() {
    const QJsonObject body{{u"text"_s, u"1"_s},       {u"integer"_s, std::numeric_limits<qint64>::max()},
                           {u"double"_s, 0.5},        {u"bool"_s, true},
                           {u"null"_s, QJsonValue()}, {u"list"_s, QJsonArray{u"Ж\n"_s, QJsonObject()}}};
    outcomeOf(m_http->post(path, body));
    QCOMPARE(m_server.lastRequest().body,
             QByteArray(R"({"bool":true,"double":0.5,"integer":9223372036854775807,"list":["Ж\n",{}],)"
                        R"("null":null,"text":"1"})"));
}

void TestHttpTransport::statusDecidesBetweenBodyAndCode_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("outcome");
    for (const int status : {200, 201, 206, 299, 300, 399})
        QTest::addRow("%d", status) << status << u"body"_s;
    // The body of a redirect to nowhere is not kept.
    for (const int status : {204, 301, 302, 303, 304, 305, 307, 308})
        QTest::addRow("%d", status) << status << QString();
    for (const int status :
         {400, 401, 403, 404, 405, 407, 409, 410, 418, 429, 451, 500, 501, 502, 503, 504, 599})
        QTest::addRow("%d", status) << status << u"<api %1>"_s.arg(status);
}

void TestHttpTransport::statusDecidesBetweenBodyAndCode() {
    QFETCH(int, status);
    QTEST(told(get(ScriptedAnswer::of(status, status == 204 || status == 304 ? "" : "body"))), "outcome");
    QCOMPARE(m_server.requests().size(), 1);
}

void TestHttpTransport::brokenAnswersAreTransportErrors_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("ending");
    const QString close = u"close"_s;
    QTest::newRow("silence") << QByteArray() << QString();
    QTest::newRow("closed without a byte") << QByteArray() << close;
    QTest::newRow("closed in the head") << QByteArray("HTTP/1.1 200 OK\r\nContent-Le") << close;
    QTest::newRow("silence in the head") << QByteArray("HTTP/1.1 200 OK\r\nContent-Le") << QString();
    QTest::newRow("closed in the body")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}") << close;
    QTest::newRow("silence in the body")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}") << QString();
    QTest::newRow("closed before the body")
        << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n") << close;
    QTest::newRow("another protocol") << QByteArray("220 mail.example.org ESMTP\r\n") << close;
}

void TestHttpTransport::brokenAnswersAreTransportErrors() {
    QFETCH(QByteArray, bytes);
    QFETCH(QString, ending);
    ScriptedAnswer answer;
    if (!bytes.isNull())
        answer.bytes = bytes;
    if (ending == u"close")
        answer.afterwards = ScriptedAnswer::Afterwards::close;
    m_server.answerNext(answer);
    HttpTransport impatient(m_server.base(), m_signedIn->session, ending.isEmpty() ? 200 : 60'000);
    const auto outcome = outcomeOf(impatient.post(path, {}));
    QCOMPARE(told(outcome), u"<transport>"_s);
    m_server.reset();
    QCOMPARE(told(outcomeOf(m_http->get(path))), u"{}"_s);
}

void TestHttpTransport::answersHaveALimit_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qsizetype>("size");
    QTest::addColumn<QString>("failure");
    const QByteArray ok("HTTP/1.1 200 OK\r\n");
    const QByteArray packed("Content-Encoding: deflate\r\n");
    const QByteArray zeros(answerLimit, '0');
    const auto withLength = [](const QByteArray &head, const QByteArray &body) {
        return head + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    };
    const auto zip = [](const QByteArray &bytes) { return qCompress(bytes).sliced(4); };
    const QString tooLarge("The answer is too large.");
    QTest::newRow("just small enough") << withLength(ok, zeros) << answerLimit << QString();
    QTest::newRow("just small enough, packed")
        << withLength(ok + packed, zip(zeros)) << answerLimit << QString();
    // None of these comes to its end.
    const QByteArray more(answerLimit + 1, 'x');
    QTest::newRow("no length") << ok + "\r\n" + more << qsizetype(0) << tooLarge;
    QTest::newRow("a length that promises more")
        << ok + "Content-Length: 9000000000000\r\n\r\n" + more << qsizetype(0) << tooLarge;
    QTest::newRow("chunks") << ok + "Transfer-Encoding: chunked\r\n\r\n" +
                                   QByteArray("5000\r\n" + QByteArray(0x5000, 'x') + "\r\n").repeated(6)
                            << qsizetype(0) << tooLarge;
    QTest::newRow("packed") << ok + packed + "\r\n" + zip(QByteArray(100 * answerLimit, 'x')) << qsizetype(0)
                            << tooLarge;
    QTest::newRow("a failure") << "HTTP/1.1 500 Oh\r\n\r\n" + more << qsizetype(0) << tooLarge;
    QTest::newRow("packed badly") << withLength(ok + packed, "no zip") << qsizetype(0)
                                  << "Decompression failed: ";
}

void TestHttpTransport::answersHaveALimit() {
    QFETCH(QByteArray, bytes);
    m_server.answerNext({bytes, ScriptedAnswer::Afterwards::keepOpen, false});
    const QNetworkRequest request = httpRequest(QUrl(m_server.base()), 10'000);
    const HttpAnswer answer = QCoro::waitFor(awaitAnswer(sharedNetwork().get(request), answerLimit));
    QTEST(answer.body.size(), "size");
    QTEST(answer.transportError, "failure");
}

void TestHttpTransport::anAnswerWithoutEndCostsLittleMemory() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer needs all addresses there are");
#endif
    const ChildResult result = runChild({});
    QVERIFY2(!result.crashed && result.exitCode == 0, qPrintable(result.errors));
}

void TestHttpTransport::whatActsIsSentOnce_data() {
    QTest::addColumn<QString>("request");
    QTest::addColumn<bool>("obliging");
    QTest::addColumn<QString>("outcome");
    QTest::addColumn<int>("arrivals");
    for (const char *acting : {"POST", "PATCH", "DELETE", "large POST", "bare POST"}) {
        QTest::addRow("%s", acting) << acting << true << "{}" << 1;
        QTest::addRow("%s, on a connection that stays against our wish", acting)
            << acting << false << "<transport>" << 1;
    }
    for (const char *repeatable : {"GET", "keyed POST"})
        QTest::addRow("%s", repeatable) << repeatable << true << "{}" << 2;
}

void TestHttpTransport::whatActsIsSentOnce() {
    QFETCH(QString, request);
    QFETCH(bool, obliging);
    ScriptedHttpServer server;
    HttpTransport http(server.base(), m_signedIn->session);
    server.endReused();
    if (!obliging) {
        ScriptedAnswer staying = ScriptedAnswer::of(200, "{}");
        staying.afterwards = ScriptedAnswer::Afterwards::keepOpen;
        server.answerNext(staying);
    }
    const QJsonObject body{{"k", QString(request.startsWith("large") ? 1'000'000 : 1, 'x')}};
    const auto send = [&] {
        if (request == "bare POST") {
            QNetworkRequest bare = httpRequest(QUrl(server.base() + path), 60'000);
            bare.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
            const auto answer = QCoro::waitFor(awaitAnswer(sharedNetwork().post(bare, json::compact(body))));
            return answer.transportError.isNull() ? QString::fromUtf8(answer.body) : "<transport>";
        }
        return told(outcomeOf(request == "GET"          ? http.get(path)
                              : request == "PATCH"      ? http.patch(path, body)
                              : request == "DELETE"     ? http.del(path, body)
                              : request == "keyed POST" ? http.post(path, body, {{"Idempotency-Key", "k"}})
                                                        : http.post(path, body)));
    };
    QCOMPARE(send(), "{}");
    QTEST(send(), "outcome");
    QTEST(int(server.requests().size()) - 1, "arrivals");
}

void TestHttpTransport::actingRequestsFollowRedirects() {
    for (const int status : {307, 308}) {
        m_server.reset();
        m_server.answerNext(ScriptedAnswer::of(status, "", "Location: /moved\r\n"));
        const QJsonObject body{{"k", QString(1'000'000, 'x')}};
        QCOMPARE(told(outcomeOf(m_http->post(path, body))), "{}");
        QCOMPARE(m_server.lastRequest().target, "/moved");
        QCOMPARE(m_server.lastRequest().body, json::compact(body));
        // What moved may not come twice either.
        m_server.reset();
        m_server.answerNext(ScriptedAnswer::of(status, "", "Location: /moved\r\n"));
        m_server.answerNext(ScriptedAnswer::closed());
        QCOMPARE(told(outcomeOf(m_http->post(path, body))), "<transport>");
        QCOMPARE(m_server.requests().size(), 2);
    }
}

void TestHttpTransport::nobodyListeningIsATransportError() {
    QString base;
    {
        const ScriptedHttpServer gone;
        base = gone.base();
    }
    HttpTransport http(base, m_signedIn->session);
    QCOMPARE(told(outcomeOf(http.get(path))), u"<transport>"_s);
}

void TestHttpTransport::redirectsStayWithinOneOrigin_data() {
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("sameOrigin");
    for (const int status : {301, 302, 303, 307, 308}) {
        QTest::addRow("%d here", status) << status << true;
        QTest::addRow("%d elsewhere", status) << status << false;
    }
}

void TestHttpTransport::redirectsStayWithinOneOrigin() {
    QFETCH(int, status);
    QFETCH(bool, sameOrigin);
    ScriptedHttpServer elsewhere;
    const QString target = (sameOrigin ? m_server.base() : elsewhere.base()) + u"/moved"_s;
    m_server.answerNext(ScriptedAnswer::of(status, "moved", "Location: " + target.toUtf8() + "\r\n"));
    const QString outcome = told(outcomeOf(m_http->get(path)));
    QVERIFY(elsewhere.requests().isEmpty());
    if (sameOrigin) {
        QCOMPARE(outcome, u"{}"_s);
        QCOMPARE(m_server.lastRequest().target, "/moved");
        QCOMPARE(m_server.lastRequest().headers.value("authorization"), "Bearer t0k");
    } else {
        // An answer below 400 that is not followed is an answer like any other.
        QCOMPARE(outcome, QString());
    }
}

void TestHttpTransport::lateAnswersReachTheirOwnCallers() {
    m_server.answerNext(ScriptedAnswer::of(200, "first").heldBack());
    m_server.answerNext(ScriptedAnswer::of(404, "second"));
    auto first = m_http->get(u"/first"_s);
    QTRY_COMPARE(m_server.requests().size(), 1);
    QCOMPARE(told(outcomeOf(m_http->get(u"/second"_s))), u"<api 404>"_s);
    m_signedIn->session.logout();
    m_server.release();
    QCOMPARE(told(outcomeOf(std::move(first))), u"first"_s);
}

void TestHttpTransport::severalConnectionsServeOverlappingRequests() {
    std::vector<QCoro::Task<Outcome<QByteArray>>> tasks;
    for (int number = 0; number < 30; ++number) {
        const QByteArray body = QByteArray::number(number);
        m_server.answerNext(ScriptedAnswer::of(200, body));
        tasks.push_back(settle(m_http->get(u"/%1"_s.arg(number))));
    }
    QStringList answers;
    for (auto &task : tasks)
        answers.append(told(QCoro::waitFor(task)));
    QCOMPARE(m_server.requests().size(), 30);
    QCOMPARE(QSet<QString>(answers.cbegin(), answers.cend()).size(), 30);
}

void TestHttpTransport::largeBodiesArriveWhole() {
    const QByteArray large = "[\"" + QByteArray(10'000'000, 'x') + "\"]";
    QCOMPARE(get(ScriptedAnswer::of(200, large)).value, large);
    const QJsonObject body{{u"k"_s, QString::fromLatin1(large)}};
    outcomeOf(m_http->post(path, body));
    QCOMPARE(m_server.lastRequest().body, json::compact(body));
}

void TestHttpTransport::brokenBaseStopsTheProcess_data() {
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("target");
    QTest::newRow("no address") << u"http://[::"_s << path;
    QTest::newRow("impossible port") << u"http://127.0.0.1:99999"_s << path;
    QTest::newRow("space in the path") << u"http://127.0.0.1:1"_s << u"/a b"_s;
    QTest::newRow("bad percent sign") << u"http://127.0.0.1:1"_s << u"/a%zz"_s;
}

void TestHttpTransport::brokenBaseStopsTheProcess() {
    QFETCH(QString, base);
    QFETCH(QString, target);
    const ChildResult result = runChild({base, target});
    QVERIFY(result.crashed || result.exitCode != 0);
    QVERIFY2(result.errors.contains(base) && result.errors.contains("ORVANETALK_API_BASE"_L1),
             qPrintable(result.errors));
    QVERIFY(!result.errors.contains("t0k"_L1));
}

void TestHttpTransport::strangeBaseIsATransportError_data() {
    QTest::addColumn<QString>("base");
    for (const char *base : {"localhost", "gopher://127.0.0.1", "http://", "example.org:8080", "/"})
        QTest::newRow(base) << QString::fromLatin1(base);
}

void TestHttpTransport::strangeBaseIsATransportError() {
    QFETCH(QString, base);
    HttpTransport http(base, m_signedIn->session);
    QCOMPARE(told(outcomeOf(http.get(path))), u"<transport>"_s);
    QCOMPARE(told(outcomeOf(http.post(path, {}))), u"<transport>"_s);
}

ORVANE_TEST_MAIN(TestHttpTransport)

#include "tst_http_transport.moc"
