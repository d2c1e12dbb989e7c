// SPDX-License-Identifier: MIT
#include "Server/HttpAnswer.h"
#include "Server/HttpTransport.h"
#include "Server/ResultConventions.h"
#include "Support/Await.h"
#include "Support/InRow.h"
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

/// How the five conventions read one answer: listUnder, mapOrEmpty, mapOr500, valueUnder, none.
using Readings = std::array<QString, 5>;

struct Convention {
    QByteArray name;
    ScriptedAnswer answer;
    Readings told;
};

QList<Convention> conventions() {
    QList<Convention> all;
    const auto map = [&](const char *body, const QString &list, const QString &value) {
        const QString text = QString::fromUtf8(body);
        all.append({body, ScriptedAnswer::of(200, body), {list, text, text, value, u"done"_s}});
    };
    const QString noList = u"list of 0"_s;
    for (const char *body : {"{}", R"({"other":[{}]})", R"({"k":1})", R"({"k":true})", R"({"k":null})",
                             R"({"k":{"k":"1"}})", R"({"k":[]})"})
        map(body, noList, u"D"_s);
    map(R"({"k":"1"})", noList, u"1"_s);
    map(R"({"k":""})", noList, QString());
    map(R"({"k":[{"id":1},{}]})", u"list of 2"_s, u"D"_s);
    for (const char *body : {"[]", R"([{"k":"1"}])", "\"1\"", "1", "null", "true"})
        all.append({body, ScriptedAnswer::of(200, body), {noList, u"{}"_s, u"api 500"_s, u"D"_s, u"done"_s}});

    const auto alike = [&](const char *name, const ScriptedAnswer &answer, const QString &told,
                           const QString &none) {
        all.append({name, answer, {told, told, told, told, none}});
    };
    for (const int status : {200, 204, 302, 399})
        alike("no bytes", ScriptedAnswer::of(status), u"json"_s, u"done"_s);
    for (const char *body : {"<html></html>", R"({"k":[{"id":1)", "{\"k\":\"\xff\"}"})
        alike(body, ScriptedAnswer::of(200, body), u"json"_s, u"done"_s);
    alike("302 to nowhere with a page", ScriptedAnswer::of(302, "<html></html>"), u"json"_s, u"done"_s);

    const auto failure = [&](const char *name, const ScriptedAnswer &answer, const QString &told) {
        alike(name, answer, told, told);
    };
    failure("400", ScriptedAnswer::of(400, R"({"k":[{}],"error":"x"})"), u"api 400"_s);
    failure("401", ScriptedAnswer::of(401, "{}", "WWW-Authenticate: Bearer\r\n"), u"api 401"_s);
    failure("401 of another kind", ScriptedAnswer::of(401, "{}", "WWW-Authenticate: Basic realm=\"x\"\r\n"),
            u"api 401"_s);
    failure("404", ScriptedAnswer::of(404), u"api 404"_s);
    failure("500", ScriptedAnswer::of(500, "{"), u"api 500"_s);
    failure("cut short", ScriptedAnswer::truncated(R"({"k":[]})"), u"transport"_s);
    failure("silence", ScriptedAnswer::silence(), u"transport"_s);
    return all;
}

} // namespace

class TestHttpTransport : public QObject {
    Q_OBJECT

public:
    static int child(const QStringList &arguments);

private Q_SLOTS:
    void init();
    void requestsGoOutExactly();
    void pathsGoOutAsGiven();
    void additionalHeadersWin();
    void statusDecidesBetweenBodyAndCode();
    void brokenAnswersAreTransportErrors();
    void answersHaveALimit();
    void anAnswerWithoutEndCostsLittleMemory();
    void whatActsIsSentOnce();
    void actingRequestsFollowRedirects();
    void redirectsStayWithinOneOrigin();
    void lateAnswersReachTheirOwnCallers();
    void largeBodiesArriveWhole();
    void brokenBaseStopsTheProcess();
    void strangeBaseIsATransportError();
    void everyAnswerHasOneReading();

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

void TestHttpTransport::requestsGoOutExactly() {
    const QJsonObject body{{u"text"_s, u"1"_s},       {u"integer"_s, std::numeric_limits<qint64>::max()},
                           {u"double"_s, 0.5},        {u"bool"_s, true},
                           {u"null"_s, QJsonValue()}, {u"list"_s, QJsonArray{u"Ж\n"_s, QJsonObject()}}};
    const QByteArray bytes(R"({"bool":true,"double":0.5,"integer":9223372036854775807,"list":["Ж\n",{}],)"
                           R"("null":null,"text":"1"})");
    using Send = std::function<QCoro::Task<QByteArray>(HttpTransport &)>;
    const struct {
        const char *method;
        Send send;
        /// Null for a request without one.
        QByteArray body;
    } rows[] = {
        {"GET", [](HttpTransport &http) { return http.get(path); }, {}},
        {"POST", [&](HttpTransport &http) { return http.post(path, body); }, bytes},
        {"PATCH", [&](HttpTransport &http) { return http.patch(path, body); }, bytes},
        {"DELETE", [&](HttpTransport &http) { return http.del(path, body); }, bytes},
        {"POST", [](HttpTransport &http) { return http.post(path, {}); }, "{}"},
        {"PATCH", [](HttpTransport &http) { return http.patch(path, {}); }, "{}"},
        {"DELETE", [](HttpTransport &http) { return http.del(path, {}); }, "{}"},
    };
    for (const auto &row : rows) {
        const InRow named(row.method);
        init();
        QCOMPARE(told(outcomeOf(row.send(*m_http))), u"{}"_s);
        const RecordedRequest sent = m_server.lastRequest();
        QCOMPARE(sent.method, row.method);
        QCOMPARE(sent.target, path.toUtf8());
        QCOMPARE(sent.headers.value("authorization"), "Bearer t0k");
        QCOMPARE(sent.headers.value("content-type"),
                 row.body.isNull() ? QByteArray() : QByteArray("application/json"));
        QCOMPARE(sent.body, row.body);
        // The token is that of the moment.
        m_signedIn->session.token = u"next"_s;
        outcomeOf(row.send(*m_http));
        QCOMPARE(m_server.lastRequest().headers.value("authorization"), "Bearer next");
        m_signedIn->session.logout();
        QCOMPARE(told(outcomeOf(row.send(*m_http))), u"{}"_s);
        QVERIFY(!m_server.lastRequest().headers.contains("authorization"));
        QCOMPARE(m_server.requests().size(), 3);
    }
}

void TestHttpTransport::pathsGoOutAsGiven() {
    for (const char *given : {"/", "/a/b?x=1&y=2", "/a%2Fb%20c?q=%26%3D%25", "/a//b/", "/a?x=+1&y=a:b@c/d?e",
                              "/a;b=c,d", "/%D0%B6", "/~a!$'()*"}) {
        outcomeOf(m_http->get(QLatin1StringView(given)));
        QCOMPARE(m_server.lastRequest().target, given);
    }
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

void TestHttpTransport::statusDecidesBetweenBodyAndCode() {
    for (const int status : {200, 201, 204, 206, 299, 300, 301, 302, 303, 304, 305, 307, 308, 399, 400, 401,
                             403, 404, 405, 407, 409, 410, 418, 429, 451, 500, 501, 502, 503, 504, 599}) {
        m_server.reset();
        const bool bodyless = status == 204 || status == 304;
        const QString outcome = told(get(ScriptedAnswer::of(status, bodyless ? "" : "body")));
        // The body of a redirect to nowhere is not kept.
        const bool dropsBody = bodyless || (status > 300 && status < 309);
        QCOMPARE(outcome, status >= 400 ? u"<api %1>"_s.arg(status) : dropsBody ? QString() : u"body"_s);
        QCOMPARE(m_server.requests().size(), 1);
    }
}

void TestHttpTransport::brokenAnswersAreTransportErrors() {
    using Afterwards = ScriptedAnswer::Afterwards;
    const std::pair<const char *, Afterwards> rows[] = {
        {nullptr, Afterwards::keepOpen},
        {nullptr, Afterwards::close},
        {"HTTP/1.1 200 OK\r\nContent-Le", Afterwards::close},
        {"HTTP/1.1 200 OK\r\nContent-Le", Afterwards::keepOpen},
        {"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}", Afterwards::close},
        {"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{}", Afterwards::keepOpen},
        {"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n", Afterwards::close},
        {"220 mail.example.org ESMTP\r\n", Afterwards::close},
    };
    for (const auto &[bytes, afterwards] : rows) {
        const InRow row(bytes);
        m_server.answerNext({bytes ? std::optional<QByteArray>(bytes) : std::nullopt, afterwards, false});
        const bool staysOpen = afterwards == Afterwards::keepOpen;
        HttpTransport impatient(m_server.base(), m_signedIn->session, staysOpen ? 200 : 60'000);
        QCOMPARE(told(outcomeOf(impatient.post(path, {}))), u"<transport>"_s);
        m_server.reset();
        QCOMPARE(told(outcomeOf(m_http->get(path))), u"{}"_s);
    }
    const QString nobody = std::make_unique<ScriptedHttpServer>()->base();
    HttpTransport http(nobody, m_signedIn->session);
    QCOMPARE(told(outcomeOf(http.get(path))), u"<transport>"_s);
}

void TestHttpTransport::answersHaveALimit() {
    const QByteArray ok("HTTP/1.1 200 OK\r\n");
    const QByteArray packed("Content-Encoding: deflate\r\n");
    const QByteArray zeros(answerLimit, '0');
    const QByteArray more(answerLimit + 1, 'x');
    const auto withLength = [](const QByteArray &head, const QByteArray &body) {
        return head + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    };
    const auto zip = [](const QByteArray &bytes) { return qCompress(bytes).sliced(4); };
    const QString tooLarge("The answer is too large.");
    const struct {
        const char *name;
        QByteArray bytes;
        qsizetype size;
        QString failure;
    } rows[] = {
        {"just small enough", withLength(ok, zeros), answerLimit, {}},
        {"just small enough, packed", withLength(ok + packed, zip(zeros)), answerLimit, {}},
        // None of these comes to its end.
        {"no length", ok + "\r\n" + more, 0, tooLarge},
        {"a length that promises more", ok + "Content-Length: 9000000000000\r\n\r\n" + more, 0, tooLarge},
        {"chunks",
         ok + "Transfer-Encoding: chunked\r\n\r\n" +
             QByteArray("5000\r\n" + QByteArray(0x5000, 'x') + "\r\n").repeated(6),
         0, tooLarge},
        {"packed", ok + packed + "\r\n" + zip(QByteArray(100 * answerLimit, 'x')), 0, tooLarge},
        {"a failure", "HTTP/1.1 500 Oh\r\n\r\n" + more, 0, tooLarge},
        {"packed badly", withLength(ok + packed, "no zip"), 0, "Decompression failed: "},
    };
    for (const auto &row : rows) {
        const InRow named(row.name);
        m_server.answerNext({row.bytes, ScriptedAnswer::Afterwards::keepOpen, false});
        const QNetworkRequest request = httpRequest(QUrl(m_server.base()), 10'000);
        const HttpAnswer answer = QCoro::waitFor(awaitAnswer(sharedNetwork().get(request), answerLimit));
        QCOMPARE(answer.body.size(), row.size);
        QCOMPARE(answer.transportError, row.failure);
    }
}

void TestHttpTransport::anAnswerWithoutEndCostsLittleMemory() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer needs all addresses there are");
#endif
    const ChildResult result = runChild({});
    QVERIFY2(!result.crashed && result.exitCode == 0, qPrintable(result.errors));
}

void TestHttpTransport::whatActsIsSentOnce() {
    const struct {
        const char *request;
        bool repeatable;
        /// The server ends the connection as it is asked to.
        bool obliging;
    } rows[] = {
        {"POST", false, true},       {"PATCH", false, true},     {"DELETE", false, true},
        {"large POST", false, true}, {"bare POST", false, true}, {"POST", false, false},
        {"PATCH", false, false},     {"DELETE", false, false},   {"large POST", false, false},
        {"bare POST", false, false}, {"GET", true, true},        {"keyed POST", true, true},
    };
    for (const auto &row : rows) {
        const QByteArray request = row.request;
        const InRow named(request + (row.obliging ? "" : ", on a connection that stays"));
        ScriptedHttpServer server;
        HttpTransport http(server.base(), m_signedIn->session);
        server.endReused();
        if (!row.obliging) {
            ScriptedAnswer staying = ScriptedAnswer::of(200, "{}");
            staying.afterwards = ScriptedAnswer::Afterwards::keepOpen;
            server.answerNext(staying);
        }
        const QJsonObject body{{"k", QString(request.startsWith("large") ? 1'000'000 : 1, 'x')}};
        const auto send = [&] {
            if (request == "bare POST") {
                QNetworkRequest bare = httpRequest(QUrl(server.base() + path), 60'000);
                bare.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
                auto *reply = sharedNetwork().post(bare, json::compact(body));
                const auto answer = QCoro::waitFor(awaitAnswer(reply));
                return answer.transportError.isNull() ? QString::fromUtf8(answer.body) : "<transport>";
            }
            return told(outcomeOf(request == "GET"      ? http.get(path)
                                  : request == "PATCH"  ? http.patch(path, body)
                                  : request == "DELETE" ? http.del(path, body)
                                  : request == "keyed POST"
                                      ? http.post(path, body, {{"Idempotency-Key", "k"}})
                                      : http.post(path, body)));
        };
        QCOMPARE(send(), "{}");
        QCOMPARE(send(), row.obliging ? "{}" : "<transport>");
        QCOMPARE(server.requests().size() - 1, row.repeatable ? 2 : 1);
    }
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

void TestHttpTransport::redirectsStayWithinOneOrigin() {
    for (const int status : {301, 302, 303, 307, 308}) {
        ScriptedHttpServer elsewhere;
        for (const bool here : {true, false}) {
            const InRow row(QByteArray::number(status) + (here ? " here" : " elsewhere"));
            const QByteArray target = (here ? m_server.base() : elsewhere.base()).toUtf8() + "/moved";
            const QString outcome =
                told(get(ScriptedAnswer::of(status, "moved", "Location: " + target + "\r\n")));
            QVERIFY(elsewhere.requests().isEmpty());
            // An answer below 400 that is not followed is an answer like any other.
            QCOMPARE(outcome, here ? u"{}"_s : QString());
            QCOMPARE(m_server.lastRequest().target, here ? "/moved" : path.toUtf8());
            QCOMPARE(m_server.lastRequest().headers.value("authorization"), "Bearer t0k");
        }
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
    // Many at once.
    std::vector<QCoro::Task<Outcome<QByteArray>>> tasks;
    for (int number = 0; number < 30; ++number) {
        m_server.answerNext(ScriptedAnswer::of(200, QByteArray::number(number)));
        tasks.push_back(settle(m_http->get(u"/%1"_s.arg(number))));
    }
    QSet<QString> answers;
    for (auto &task : tasks)
        answers.insert(told(QCoro::waitFor(task)));
    QCOMPARE(m_server.requests().size(), 32);
    QCOMPARE(answers.size(), 30);
}

void TestHttpTransport::largeBodiesArriveWhole() {
    const QByteArray large = "[\"" + QByteArray(10'000'000, 'x') + "\"]";
    QCOMPARE(get(ScriptedAnswer::of(200, large)).value, large);
    const QJsonObject body{{u"k"_s, QString::fromLatin1(large)}};
    outcomeOf(m_http->post(path, body));
    QCOMPARE(m_server.lastRequest().body, json::compact(body));
}

void TestHttpTransport::brokenBaseStopsTheProcess() {
    const std::pair<QString, QString> rows[] = {
        {u"http://[::"_s, path},
        {u"http://127.0.0.1:99999"_s, path},
        {u"http://127.0.0.1:1"_s, u"/a b"_s},
        {u"http://127.0.0.1:1"_s, u"/a%zz"_s},
    };
    for (const auto &[base, target] : rows) {
        const InRow row(base.toUtf8() + target.toUtf8());
        const ChildResult result = runChild({base, target});
        QVERIFY(result.crashed || result.exitCode != 0);
        QVERIFY2(result.errors.contains(base) && result.errors.contains("ORVANETALK_API_BASE"_L1),
                 qPrintable(result.errors));
        QVERIFY(!result.errors.contains("t0k"_L1));
    }
}

void TestHttpTransport::strangeBaseIsATransportError() {
    for (const char *base : {"localhost", "gopher://127.0.0.1", "http://", "example.org:8080", "/"}) {
        const InRow row(base);
        HttpTransport http(QLatin1StringView(base), m_signedIn->session);
        QCOMPARE(told(outcomeOf(http.get(path))), u"<transport>"_s);
        QCOMPARE(told(outcomeOf(http.post(path, {}))), u"<transport>"_s);
    }
}

void TestHttpTransport::everyAnswerHasOneReading() {
    for (const Convention &row : conventions()) {
        const InRow named(row.name);
        HttpTransport http(m_server.base(), m_signedIn->session, row.answer.bytes ? 60'000 : 200);
        const auto ask = [&] {
            m_server.answerNext(row.answer);
            return http.get(u"/x"_s);
        };
        const QString key = u"k"_s;
        const auto list = outcomeOf(listUnder(ask(), key));
        QCOMPARE(list.value ? u"list of %1"_s.arg(list.value->size()) : list.failure, row.told[0]);
        const auto map = outcomeOf(mapOrEmpty(ask()));
        QCOMPARE(map.value ? QString::fromUtf8(json::compact(*map.value)) : map.failure, row.told[1]);
        const auto strict = outcomeOf(mapOr500(ask()));
        QCOMPARE(strict.value ? QString::fromUtf8(json::compact(*strict.value)) : strict.failure,
                 row.told[2]);
        const auto value = outcomeOf(valueUnder<QString>(ask(), key, json::text, u"D"_s));
        QCOMPARE(value.value.value_or(value.failure), row.told[3]);
        const auto nothing = outcomeOf(none(ask()));
        QCOMPARE(nothing.value ? u"done"_s : nothing.failure, row.told[4]);
    }
}

ORVANE_TEST_MAIN(TestHttpTransport)

#include "tst_http_transport.moc"
