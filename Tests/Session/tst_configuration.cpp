// SPDX-License-Identifier: MIT
#include "Session/OrvaneTalkEndpoint.h"
#include "Session/OrvaneTalkFeatureFlags.h"
#include "Session/UserIdText.h"
#include "Support/TestMain.h"

#include <QUrl>

#include <cstdio>

using namespace Qt::StringLiterals;

using namespace orvane;

class TestConfiguration : public QObject {
    Q_OBJECT

public:
    static int child(const QStringList &arguments);

private Q_SLOTS:
    void blankVariablesFallBack_data();
    void blankVariablesFallBack();
    void onlyFourWordsTurnAFlagOn_data();
    void onlyFourWordsTurnAFlagOn();
    void plainStartTalksToTheDefaultServerWithEverythingOff();
    void valuesAreReadOnce();
    void userIdsAreParsedExactly_data();
    void userIdsAreParsedExactly();
};

/// Prints the four values, changes the environment and prints them again.
int TestConfiguration::child(const QStringList &) {
    for (int round = 0; round < 2; ++round) {
        std::printf("%s %s %d %d\n", qUtf8Printable(OrvaneTalkEndpoint::baseURL()),
                    qUtf8Printable(OrvaneTalkEndpoint::webSocketURL()),
                    OrvaneTalkFeatureFlags::experimentalCrypto(), OrvaneTalkFeatureFlags::nativeCalls());
        for (const char *name : {"ORVANETALK_API_BASE", "ORVANETALK_WS_URL",
                                 "ORVANETALK_ENABLE_EXPERIMENTAL_CRYPTO", "ORVANETALK_ENABLE_NATIVE_CALLS"})
            qputenv(name, "on");
    }
    return 0;
}

void TestConfiguration::blankVariablesFallBack_data() {
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("configured");
    const QString fallback = u"fallback"_s;
    QTest::newRow("empty") << QByteArray("") << fallback;
    QTest::newRow("three blanks") << QByteArray("   ") << fallback;
    QTest::newRow("white space") << QByteArray(" \t\r\n") << fallback;
    QTest::newRow("url") << QByteArray("http://127.0.0.1:1") << u"http://127.0.0.1:1"_s;
    QTest::newRow("blanks around") << QByteArray(" \nhttp://a b/ \n") << u"http://a b/"_s;
    QTest::newRow("no url") << QByteArray("::") << u"::"_s;
}

void TestConfiguration::blankVariablesFallBack() {
    QFETCH(QByteArray, value);
    qputenv("ORVANE_TEST_VALUE", value);
    QTEST(OrvaneTalkEndpoint::configured("ORVANE_TEST_VALUE", u"fallback"_s), "configured");
    qunsetenv("ORVANE_TEST_VALUE");
    QCOMPARE(OrvaneTalkEndpoint::configured("ORVANE_TEST_VALUE", u"fallback"_s), u"fallback"_s);
}

void TestConfiguration::onlyFourWordsTurnAFlagOn_data() {
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<bool>("on");
    for (const char *value : {"1", "true", "yes", "on", "ON", "True", " yes\n", "\tOn "})
        QTest::newRow(value) << QByteArray(value) << true;
    for (const char *value :
         {"", " ", "0", "2", "11", "enabled", "y", "t", "off", "no", "1 1", "true.", "\"1\"", "１"})
        QTest::newRow(value) << QByteArray(value) << false;
}

void TestConfiguration::onlyFourWordsTurnAFlagOn() {
    QFETCH(QByteArray, value);
    qputenv("ORVANE_TEST_FLAG", value);
    QTEST(OrvaneTalkFeatureFlags::enabled("ORVANE_TEST_FLAG"), "on");
    qunsetenv("ORVANE_TEST_FLAG");
    QVERIFY(!OrvaneTalkFeatureFlags::enabled("ORVANE_TEST_FLAG"));
}

void TestConfiguration::plainStartTalksToTheDefaultServerWithEverythingOff() {
    const ChildResult child = runChild({}, {u"ORVANETALK_API_BASE="_s, u"ORVANETALK_WS_URL= "_s});
    const QStringList values = child.output.section(u'\n', 0, 0).split(u' ');
    QCOMPARE(values.size(), 4);
    const QUrl base(values.at(0));
    const QUrl socket(values.at(1));
    QCOMPARE(base.scheme(), u"https"_s);
    QVERIFY(base.path().isEmpty());
    QCOMPARE(socket.scheme(), u"wss"_s);
    QCOMPARE(socket.host(), base.host());
    QCOMPARE(socket.path(), u"/ws"_s);
    QCOMPARE(values.mid(2), (QStringList{u"0"_s, u"0"_s}));
}

void TestConfiguration::valuesAreReadOnce() {
    const ChildResult child =
        runChild({}, {u"ORVANETALK_API_BASE=http://127.0.0.1:1"_s, u"ORVANETALK_WS_URL=ws://127.0.0.1:2/ws"_s,
                      u"ORVANETALK_ENABLE_EXPERIMENTAL_CRYPTO=YES"_s, u"ORVANETALK_ENABLE_NATIVE_CALLS=2"_s});
    const QString line = u"http://127.0.0.1:1 ws://127.0.0.1:2/ws 1 0\n"_s;
    QCOMPARE(child.output, line + line);
}

void TestConfiguration::userIdsAreParsedExactly_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<qint64>("id");
    const auto row = [](const char *text, bool valid, qint64 id) {
        QTest::addRow("<%s>", text) << QString::fromUtf8(text) << valid << id;
    };
    row("12", true, 12);
    row("+12", true, 12);
    row("-12", true, -12);
    row("0012", true, 12);
    row("-0", true, 0);
    row("9223372036854775807", true, std::numeric_limits<qint64>::max());
    row("-9223372036854775808", true, std::numeric_limits<qint64>::min());
    for (const char *text :
         {"", "+", "-", "12a", " 12", "12 ", "1 2", "1,000", "1.0", "1e3", "0x12", "+-1", "--1", "١٢",
          "9223372036854775808", "-9223372036854775809", "99999999999999999999999999"})
        row(text, false, 0);
    QTest::newRow("a character of nothing") << u"12"_s + QChar(u'\0') << false << qint64(0);
}

void TestConfiguration::userIdsAreParsedExactly() {
    QFETCH(QString, text);
    const auto id = parseUserId(text);
    QTEST(id.has_value(), "valid");
    QTEST(id.value_or(0), "id");
}

ORVANE_TEST_MAIN(TestConfiguration)

#include "tst_configuration.moc"
