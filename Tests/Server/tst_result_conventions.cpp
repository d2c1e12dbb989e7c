// SPDX-License-Identifier: MIT
#include "Server/HttpTransport.h"
#include "Server/ResultConventions.h"
#include "Support/Await.h"
#include "Support/ScriptedHttpServer.h"
#include "Support/SignedInSession.h"
#include "Support/TestMain.h"

using namespace Qt::StringLiterals;

using namespace orvane;

namespace {

QString told(const Outcome<QList<QJsonObject>> &outcome) {
    return outcome.value ? u"list of %1"_s.arg(outcome.value->size()) : outcome.failure;
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
    const QString noList = u"list of 0"_s;
    const QString noMap = u"{}"_s;
    const QString noValue = u"D"_s;
    const QString done = u"done"_s;
    const auto map = [&](const char *name, const char *body, const QString &list, const QString &value) {
        QTest::newRow(name) << ScriptedAnswer::of(200, body) << list << QString::fromUtf8(body)
                            << QString::fromUtf8(body) << value << done;
    };
    map("empty map", "{}", noList, noValue);
    map("missing key", R"({"other":[{}]})", noList, noValue);
    map("a text", R"({"k":"1"})", noList, u"1"_s);
    map("an empty text", R"({"k":""})", noList, QString());
    map("a number", R"({"k":1})", noList, noValue);
    map("a boolean", R"({"k":true})", noList, noValue);
    map("null", R"({"k":null})", noList, noValue);
    map("a map", R"({"k":{"k":"1"}})", noList, noValue);
    map("a list", R"({"k":[{"id":1},{}]})", u"list of 2"_s, noValue);
    map("an empty list", R"({"k":[]})", noList, noValue);

    const QString json = u"json"_s;
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
        QTest::newRow(body) << ScriptedAnswer::of(200, body) << noList << noMap << u"api 500"_s << noValue
                            << done;

    const auto failure = [](const char *name, const ScriptedAnswer &answer, const QString &told) {
        QTest::newRow(name) << answer << told << told << told << told << told;
    };
    failure("400 with a good body", ScriptedAnswer::of(400, R"({"k":[{}],"error":"x"})"), u"api 400"_s);
    failure("401", ScriptedAnswer::of(401, "{}", "WWW-Authenticate: Bearer\r\n"), u"api 401"_s);
    failure("401 of another kind", ScriptedAnswer::of(401, "{}", "WWW-Authenticate: Basic realm=\"x\"\r\n"),
            u"api 401"_s);
    failure("404", ScriptedAnswer::of(404), u"api 404"_s);
    failure("500", ScriptedAnswer::of(500, "{"), u"api 500"_s);
    failure("cut short", ScriptedAnswer::truncated(R"({"k":[]})"), u"transport"_s);
    failure("silence", ScriptedAnswer::silence(), u"transport"_s);
}

void TestResultConventions::everyAnswerHasOneReading() {
    QFETCH(ScriptedAnswer, answer);
    ScriptedHttpServer server;
    SignedInSession signedIn;
    HttpTransport http(server.base(), signedIn.session, answer.bytes ? 60'000 : 200);
    const auto ask = [&] {
        server.reset();
        server.answerNext(answer);
        return http.get(u"/x"_s);
    };
    const QString key = u"k"_s;
    QTEST(told(outcomeOf(listUnder(ask(), key))), "listUnder");
    QTEST(told(outcomeOf(mapOrEmpty(ask()))), "mapOrEmpty");
    QTEST(told(outcomeOf(mapOr500(ask()))), "mapOr500");
    const auto value = outcomeOf(valueUnder<QString>(ask(), key, json::text, u"D"_s));
    QTEST(value.value ? *value.value : value.failure, "valueUnder");
    const auto nothing = outcomeOf(none(ask()));
    QTEST(nothing.value ? u"done"_s : nothing.failure, "none");
}

ORVANE_TEST_MAIN(TestResultConventions)

#include "tst_result_conventions.moc"
