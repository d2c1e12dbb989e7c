// SPDX-License-Identifier: MIT
#include "Session/OrvaneTalkEndpoint.h"
#include "Session/OrvaneTalkFeatureFlags.h"
#include "Session/ServerFeatures.h"
#include "Session/UserIdText.h"
#include "Support/HostileShapes.h"
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
    void blankVariablesFallBack();
    void onlyFourWordsTurnAFlagOn();
    void plainStartTalksToTheDefaultServerWithEverythingOff();
    void valuesAreReadOnce();
    void userIdsAreParsedExactly();
    void onlyAListOfTextsAnnounces();
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

void TestConfiguration::blankVariablesFallBack() {
    for (const auto &[value, configured] : {std::pair("", "fallback"),
                                            {"   ", "fallback"},
                                            {" \t\r\n", "fallback"},
                                            {"http://127.0.0.1:1", "http://127.0.0.1:1"},
                                            {" \nhttp://a b/ \n", "http://a b/"},
                                            {"::", "::"}}) {
        qputenv("ORVANE_TEST_VALUE", value);
        QCOMPARE(OrvaneTalkEndpoint::configured("ORVANE_TEST_VALUE", u"fallback"_s), configured);
    }
    qunsetenv("ORVANE_TEST_VALUE");
    QCOMPARE(OrvaneTalkEndpoint::configured("ORVANE_TEST_VALUE", u"fallback"_s), u"fallback"_s);
}

void TestConfiguration::onlyFourWordsTurnAFlagOn() {
    QVERIFY(!OrvaneTalkFeatureFlags::enabled("ORVANE_TEST_FLAG"));
    for (const char *on : {"1", "true", "yes", "on", "ON", "True", " yes\n", "\tOn "}) {
        qputenv("ORVANE_TEST_FLAG", on);
        QVERIFY2(OrvaneTalkFeatureFlags::enabled("ORVANE_TEST_FLAG"), on);
    }
    for (const char *off :
         {"", " ", "0", "2", "11", "enabled", "y", "t", "off", "no", "1 1", "true.", "\"1\"", "１"}) {
        qputenv("ORVANE_TEST_FLAG", off);
        QVERIFY2(!OrvaneTalkFeatureFlags::enabled("ORVANE_TEST_FLAG"), off);
    }
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

void TestConfiguration::userIdsAreParsedExactly() {
    for (const auto &[text, id] : {std::pair("12", qint64(12)),
                                   {"+12", 12},
                                   {"-12", -12},
                                   {"0012", 12},
                                   {"-0", 0},
                                   {"9223372036854775807", std::numeric_limits<qint64>::max()},
                                   {"-9223372036854775808", std::numeric_limits<qint64>::min()}}) {
        const InRow row(text);
        QCOMPARE(parseUserId(QLatin1StringView(text)), id);
    }
    for (const QString &text :
         {u""_s, u"+"_s, u"-"_s, u"12a"_s, u" 12"_s, u"12 "_s, u"1 2"_s, u"1,000"_s, u"1.0"_s, u"1e3"_s,
          u"0x12"_s, u"+-1"_s, u"--1"_s, u"١٢"_s, u"9223372036854775808"_s, u"-9223372036854775809"_s,
          u"99999999999999999999999999"_s, u"12"_s + QChar(u'\0')})
        QVERIFY2(!parseUserId(text), qPrintable(text));
}

void TestConfiguration::onlyAListOfTextsAnnounces() {
    const auto read = [](const QJsonObject &map) {
        return announcedFeatures(map).contains(ServerFeature::assistantContact) ? u"assistant"_s : QString();
    };
    checkAgainstHostileShapes({
        {"one", R"({"features":["assistant-contact"]})", read, u"assistant"_s, "features"},
        {"among others", R"({"features":["of later","assistant-contact",""]})", read, u"assistant"_s},
        {"no text", R"({"features":["assistant-contact",null]})", read, {}},
        {"in other letters", R"({"features":["Assistant-Contact","assistant-contact "]})", read, {}},
    });
    const QJsonArray endless = QJsonArray::fromStringList(QStringList(10'000, u"assistant-contact"_s));
    QVERIFY(announcedFeatures({{"features", endless}}).isEmpty());
}

ORVANE_TEST_MAIN(TestConfiguration)

#include "tst_configuration.moc"
