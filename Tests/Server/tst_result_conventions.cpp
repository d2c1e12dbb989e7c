#include "Server/HttpTransport.h"
#include "Server/ResultConventions.h"
#include "Support/Await.h"
#include "Support/ScriptedHttpServer.h"
#include "Support/SignedInSession.h"
#include "Support/TestMain.h"

using namespace orvane;

namespace {

QString told(const Outcome<QList<QJsonObject>> &outcome) {
    return outcome.value ? QStringLiteral("list of %1").arg(outcome.value->size()) : outcome.failure;
}

QString told(const Outcome<QJsonObject> &outcome) {
    return outcome.value ? QString::fromUtf8(json::compact(*outcome.value)) : outcome.failure;
}

} // namespace

/// Each convention against each kind of answer, over the wire.
class TestResultConventions : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyAnswerHasOneReading_data();
    void everyAnswerHasOneReading();
};

void TestResultConventions::everyAnswerHasOneReading_data() {
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<QString>("listUnder");
    QTest::addColumn<QString>("mapOrEmpty");
    QTest::addColumn<QString>("mapOr500");
    QTest::addColumn<QString>("valueUnder");
    QTest::addColumn<QString>("none");
    const QString noList = QStringLiteral("list of 0");
    const QString noMap = QStringLiteral("{}");
    const QString noValue = QStringLiteral("D");
    const QString done = QStringLiteral("done");
    const auto map = [&](const char *name, const char *body, const QString &list, const QString &value) {
        QTest::newRow(name) << ScriptedAnswer::of(200, body) << list << QString::fromUtf8(body)
                            << QString::fromUtf8(body) << value << done;
    };
    map("empty map", "{}", noList, noValue);
    map("missing key", R"({"other":[{}]})", noList, noValue);
    map("a text", R"({"k":"1"})", noList, QStringLiteral("1"));
    map("an empty text", R"({"k":""})", noList, QString());
    map("a number", R"({"k":1})", noList, noValue);
    map("a boolean", R"({"k":true})", noList, noValue);
    map("null", R"({"k":null})", noList, noValue);
    map("a map", R"({"k":{"k":"1"}})", noList, noValue);
    map("a list", R"({"k":[{"id":1},{}]})", QStringLiteral("list of 2"), noValue);
    map("an empty list", R"({"k":[]})", noList, noValue);

    const QString json = QStringLiteral("json");
    const auto broken = [&](const char *name, const ScriptedAnswer &answer) {
        QTest::newRow(name) << answer << json << json << json << json << done;
    };
    broken("no bytes", ScriptedAnswer::of(200));
    broken("204", ScriptedAnswer::of(204));
    broken("302", ScriptedAnswer::of(302));
    broken("399", ScriptedAnswer::of(399));
    broken("a page", ScriptedAnswer::of(200, "<html></html>"));
    broken("half a map", ScriptedAnswer::of(200, R"({"k":[{"id":1)"));
    broken("no UTF-8", ScriptedAnswer::of(200, "{\"k\":\"\xff\"}"));
    broken("302 to nowhere with a page", ScriptedAnswer::of(302, "<html></html>"));

    for (const char *body : {"[]", R"([{"k":"1"}])", "\"1\"", "1", "null", "true"})
        QTest::newRow(body) << ScriptedAnswer::of(200, body) << noList << noMap << QStringLiteral("api 500")
                            << noValue << done;

    const auto failure = [](const char *name, const ScriptedAnswer &answer, const QString &told) {
        QTest::newRow(name) << answer << told << told << told << told << told;
    };
    failure("400 with a good body", ScriptedAnswer::of(400, R"({"k":[{}],"error":"x"})"),
            QStringLiteral("api 400"));
    failure("401", ScriptedAnswer::of(401, "{}", "WWW-Authenticate: Bearer\r\n"), QStringLiteral("api 401"));
    failure("401 of another kind", ScriptedAnswer::of(401, "{}", "WWW-Authenticate: Basic realm=\"x\"\r\n"),
            QStringLiteral("api 401"));
    failure("404", ScriptedAnswer::of(404), QStringLiteral("api 404"));
    failure("500", ScriptedAnswer::of(500, "{"), QStringLiteral("api 500"));
    failure("cut short", ScriptedAnswer::truncated(R"({"k":[]})"), QStringLiteral("transport"));
    failure("silence", ScriptedAnswer::silence(), QStringLiteral("transport"));
}

void TestResultConventions::everyAnswerHasOneReading() {
    QFETCH(ScriptedAnswer, answer);
    ScriptedHttpServer server;
    SignedInSession signedIn;
    HttpTransport http(server.base(), signedIn.session, answer.bytes ? 60'000 : 200);
    const auto ask = [&] {
        server.reset();
        server.answerNext(answer);
        return http.get(QStringLiteral("/x"));
    };
    const QString key = QStringLiteral("k");
    QTEST(told(outcomeOf(listUnder(ask(), key))), "listUnder");
    QTEST(told(outcomeOf(mapOrEmpty(ask()))), "mapOrEmpty");
    QTEST(told(outcomeOf(mapOr500(ask()))), "mapOr500");
    const auto value = outcomeOf(valueUnder<QString>(ask(), key, json::text, QStringLiteral("D")));
    QTEST(value.value ? *value.value : value.failure, "valueUnder");
    const auto nothing = outcomeOf(none(ask()));
    QTEST(nothing.value ? QStringLiteral("done") : nothing.failure, "none");
}

ORVANE_TEST_MAIN(TestResultConventions)

#include "tst_result_conventions.moc"
