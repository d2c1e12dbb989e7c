// SPDX-License-Identifier: MIT
#include "Base/Json.h"

#include <QTest>

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
    void readersTakeOnlyTheirOwnType_data();
    void readersTakeOnlyTheirOwnType();
    void missingKeysAreAbsent();
    void bytesThatAreNoJsonAreRefused_data();
    void bytesThatAreNoJsonAreRefused();
    void anyValueMayStandAtTheTop_data();
    void anyValueMayStandAtTheTop();
    void listsOfOneTypeAreTakenAsAWhole_data();
    void listsOfOneTypeAreTakenAsAWhole();
    void textSurvivesWritingAndReading_data();
    void textSurvivesWritingAndReading();
};

void TestJson::readersTakeOnlyTheirOwnType_data() {
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QVariant>("text");
    QTest::addColumn<QVariant>("integer");
    QTest::addColumn<QVariant>("number");
    QTest::addColumn<QVariant>("boolean");
    const QVariant no;
    const auto number = [&](const QByteArray &json, const QVariant &integer, double value) {
        QTest::newRow(json.constData()) << json << no << integer << QVariant(value) << no;
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
    QTest::newRow("true") << QByteArray("true") << no << no << no << QVariant(true);
    QTest::newRow("false") << QByteArray("false") << no << no << no << QVariant(false);
    QTest::newRow("text of digits") << QByteArray("\"1\"") << QVariant(u"1"_s) << no << no << no;
    QTest::newRow("text of a word") << QByteArray("\"true\"") << QVariant(u"true"_s) << no << no << no;
    QTest::newRow("empty text") << QByteArray("\"\"") << QVariant(u""_s) << no << no << no;
    QTest::newRow("null") << QByteArray("null") << no << no << no << no;
    QTest::newRow("list") << QByteArray("[1]") << no << no << no << no;
    QTest::newRow("object") << QByteArray("{\"k\":1}") << no << no << no << no;
}

void TestJson::readersTakeOnlyTheirOwnType() {
    QFETCH(QByteArray, json);
    const QJsonObject object = json::parseObject("{\"k\":" + json + "}").value();
    QTEST(variant(json::text(object, u"k")), "text");
    QTEST(variant(json::integer(object, u"k")), "integer");
    QTEST(variant(json::number(object, u"k")), "number");
    QTEST(variant(json::boolean(object, u"k")), "boolean");
    QCOMPARE(json::list(object, u"k").has_value(), json.startsWith('['));
    QCOMPARE(json::object(object, u"k").has_value(), json.startsWith('{'));
}

void TestJson::missingKeysAreAbsent() {
    const QJsonObject object{{u"K"_s, 1}};
    QVERIFY(!json::text(object, u"k"));
    QVERIFY(!json::integer(object, u"k"));
    QVERIFY(!json::number(object, u"k"));
    QVERIFY(!json::boolean(object, u"k"));
    QVERIFY(!json::object(object, u"k"));
    QVERIFY(!json::list(object, u"k"));
    QVERIFY(!json::texts(object, u"k"));
    QVERIFY(json::objects(object, u"k").isEmpty());
}

void TestJson::bytesThatAreNoJsonAreRefused_data() {
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray rows[] = {
        "",     " \n",         "{",        "{\"a\":1", "[1,2",  "1,2",           "1],[2",
        "nul",  "\"a",         "\"a\" x",  "{}x",      "{} {}", "{'a':1}",       "{\"a\":1,}",
        "[,]",  "NaN",         "Infinity", "+1",       "-",     "<html></html>", "{\"a\":\"\xff\xfe\"}",
        "\xff", "{\"a\":tru}", "]",        "}"};
    for (const QByteArray &bytes : rows)
        QTest::addRow("<%s>", bytes.toPercentEncoding(" {}[],:\"'<>/").constData()) << bytes;
    QTest::newRow("too deep") << nested(5000);
    QTest::newRow("a byte of nothing after the end") << QByteArray("{\"a\":1}\0", 8);
}

void TestJson::bytesThatAreNoJsonAreRefused() {
    QFETCH(QByteArray, bytes);
    QVERIFY_EXCEPTION_THROWN(json::parse(bytes), JsonError);
    QVERIFY_EXCEPTION_THROWN(json::parseObject(bytes), JsonError);
}

void TestJson::anyValueMayStandAtTheTop_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("null") << QByteArray("null") << QJsonValue();
    QTest::newRow("true") << QByteArray(" true\n") << QJsonValue(true);
    QTest::newRow("integer") << QByteArray("9223372036854775807")
                             << QJsonValue(std::numeric_limits<qint64>::max());
    QTest::newRow("text") << QByteArray("\"] , [\"") << QJsonValue(u"] , ["_s);
    QTest::newRow("list") << QByteArray("[1,2]") << QJsonValue(QJsonArray{1, 2});
    QTest::newRow("object") << QByteArray("\t{ } ") << QJsonValue(QJsonObject());
}

void TestJson::anyValueMayStandAtTheTop() {
    QFETCH(QByteArray, bytes);
    QFETCH(QJsonValue, value);
    QCOMPARE(json::parse(bytes), value);
    QCOMPARE(json::parseObject(bytes).has_value(), value.isObject());
}

void TestJson::listsOfOneTypeAreTakenAsAWhole_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isTexts");
    QTest::addColumn<int>("objects");
    QTest::newRow("empty") << QByteArray("[]") << true << 0;
    QTest::newRow("texts") << QByteArray("[\"a\",\"\"]") << true << 0;
    QTest::newRow("text and number") << QByteArray("[\"a\",1]") << false << 0;
    QTest::newRow("text and null") << QByteArray("[\"a\",null]") << false << 0;
    QTest::newRow("objects") << QByteArray("[{},{\"a\":1}]") << false << 2;
    QTest::newRow("no list") << QByteArray("{\"0\":\"a\"}") << false << 0;
}

void TestJson::listsOfOneTypeAreTakenAsAWhole() {
    QFETCH(QByteArray, bytes);
    const QJsonObject object = json::parseObject("{\"k\":" + bytes + "}").value();
    QTEST(json::texts(object, u"k").has_value(), "isTexts");
    QTEST(int(json::objects(object, u"k").size()), "objects");
}

void TestJson::textSurvivesWritingAndReading_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("quotes and backslashes") << u"\"\\\\\"/"_s;
    QTest::newRow("control characters") << u"\u0001\b\t\n\u001f\u007f"_s;
    QTest::newRow("a character of nothing") << QString(QChar(u'\0')) + u"after"_s;
    QTest::newRow("beyond the first plane") << u"👩‍👩‍👧 𝕏"_s;
    QTest::newRow("line separators") << u"a\u2028b\u2029c"_s;
}

void TestJson::textSurvivesWritingAndReading() {
    QFETCH(QString, text);
    const QByteArray bytes = json::compact({{u"k"_s, text}});
    QVERIFY(!bytes.contains('\n'));
    QCOMPARE(json::text(json::parseObject(bytes).value(), u"k"), text);
}

QTEST_GUILESS_MAIN(TestJson)

#include "tst_json.moc"
