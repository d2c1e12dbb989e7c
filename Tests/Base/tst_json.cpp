// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Support/InRow.h"

#include <limits>

using namespace Qt::StringLiterals;
using namespace orvane;

namespace {

template <typename T>
QVariant variant(const std::optional<T> &value) {
    return value ? QVariant::fromValue(*value) : QVariant();
}

QByteArray nested(int depth) {
    return QByteArray(depth, '[') + QByteArray(depth, ']');
}

} // namespace

class TestJson : public QObject {
    Q_OBJECT

private Q_SLOTS:
    /// One row a JSON value: what each reader makes of it. An invalid variant stands for "absent".
    void readersTakeOnlyTheirOwnType() {
        const QVariant no;
        const auto check = [](const QByteArray &json, const QVariant &text, const QVariant &integer,
                              const QVariant &number, const QVariant &boolean) {
            IN_ROW(json);
            const QJsonObject object = json::parseObject("{\"k\":" + json + "}").value();
            QCOMPARE(variant(json::text(object, u"k")), text);
            QCOMPARE(variant(json::integer(object, u"k")), integer);
            QCOMPARE(variant(json::number(object, u"k")), number);
            QCOMPARE(variant(json::boolean(object, u"k")), boolean);
            QCOMPARE(json::list(object, u"k").has_value(), json.startsWith('['));
            QCOMPARE(json::object(object, u"k").has_value(), json.startsWith('{'));
        };
        const auto number = [&](const char *json, const QVariant &integer, double value) {
            check(json, no, integer, value, no);
        };
        using Limits = std::numeric_limits<qint64>;
        number("0", qint64(0), 0.0);
        number("1", qint64(1), 1.0);
        number("-1", qint64(-1), -1.0);
        number("1.0", qint64(1), 1.0);
        number("1e3", qint64(1000), 1000.0);
        number("1.5", no, 1.5);
        number("-0.0", qint64(0), -0.0);
        number("1e300", no, 1e300);
        number("9007199254740993", qint64(9007199254740993), 9007199254740992.0);
        number("9223372036854775807", Limits::max(), 9223372036854775808.0);
        number("9223372036854775808", no, 9223372036854775808.0);
        number("-9223372036854775808", Limits::min(), -9223372036854775808.0);
        check("true", no, no, no, true);
        check("false", no, no, no, false);
        check("\"1\"", "1", no, no, no);
        check("\"true\"", "true", no, no, no);
        check("\"\"", "", no, no, no);
        for (const char *other : {"null", "[1]", "{\"k\":1}"})
            check(other, no, no, no, no);
    }

    void missingKeysAreAbsent() {
        const QJsonObject object{{"K", 1}};
        QVERIFY(!json::text(object, u"k") && !json::integer(object, u"k") && !json::number(object, u"k"));
        QVERIFY(!json::boolean(object, u"k") && !json::object(object, u"k") && !json::list(object, u"k"));
        QVERIFY(!json::texts(object, u"k") && json::objects(object, u"k").isEmpty());
    }

    void bytesThatAreNoJsonAreRefused() {
        for (const QByteArray &bytes :
             QList<QByteArray>{"",         " \n",           "{",
                               "{\"a\":1", "[1,2",          "1,2",
                               "1],[2",    "nul",           "\"a",
                               "\"a\" x",  "{}x",           "{} {}",
                               "{'a':1}",  "{\"a\":1,}",    "[,]",
                               "NaN",      "Infinity",      "+1",
                               "-",        "<html></html>", "{\"a\":\"\xff\xfe\"}",
                               "\xff",     "{\"a\":tru}",   "]",
                               "}",        nested(5000),    QByteArray("{\"a\":1}\0", 8)}) {
            IN_ROW(bytes.left(30).toPercentEncoding(" {}[],:\"'<>/"));
            QVERIFY_EXCEPTION_THROWN(json::parse(bytes), JsonError);
            QVERIFY_EXCEPTION_THROWN(json::parseObject(bytes), JsonError);
        }
    }

    void anyValueMayStandAtTheTop() {
        const auto check = [](const char *bytes, const QJsonValue &value) {
            IN_ROW(bytes);
            QCOMPARE(json::parse(bytes), value);
            QCOMPARE(json::parseObject(bytes).has_value(), value.isObject());
        };
        check("null", QJsonValue());
        check(" true\n", true);
        check("9223372036854775807", std::numeric_limits<qint64>::max());
        check("\"] , [\"", "] , [");
        check("[1,2]", QJsonArray{1, 2});
        check("\t{ } ", QJsonObject());
    }

    void listsOfOneTypeAreTakenAsAWhole() {
        const auto check = [](const QByteArray &bytes, bool isTexts, int objects) {
            IN_ROW(bytes);
            const QJsonObject object = json::parseObject("{\"k\":" + bytes + "}").value();
            QCOMPARE(json::texts(object, u"k").has_value(), isTexts);
            QCOMPARE(json::objects(object, u"k").size(), objects);
        };
        check("[]", true, 0);
        check("[\"a\",\"\"]", true, 0);
        check("[\"a\",1]", false, 0);
        check("[\"a\",null]", false, 0);
        check("[{},{\"a\":1}]", false, 2);
        check("{\"0\":\"a\"}", false, 0);
    }

    void textSurvivesWritingAndReading() {
        for (const QString &text : {u"\"\\\\\"/"_s, u"\u0001\b\t\n\u001f\u007f"_s, u"\0after"_s,
                                    u"👩‍👩‍👧 𝕏"_s, u"a\u2028b\u2029c"_s}) {
            const QByteArray bytes = json::compact({{"k", text}});
            QVERIFY(!bytes.contains('\n'));
            QCOMPARE(json::text(json::parseObject(bytes).value(), u"k"), text);
        }
    }
};

QTEST_GUILESS_MAIN(TestJson)
#include "tst_json.moc"
