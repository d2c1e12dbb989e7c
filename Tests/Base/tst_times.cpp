// SPDX-License-Identifier: MIT
#include "Base/Times.h"

#include <QTest>
#include <QTimeZone>

#include <ctime>
#include <limits>

using namespace orvane;

class TestTimes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bothFormsNameTheSameInstant_data();
    void bothFormsNameTheSameInstant();
    void numbersOutsideTheCalendarStayInside_data();
    void numbersOutsideTheCalendarStayInside();
    void readingWhatWasWrittenChangesNothing_data();
    void readingWhatWasWrittenChangesNothing();
    void cleanup();

private:
    static void setZone(const QByteArray &name) {
        qputenv("TZ", name);
        tzset();
    }
};

void TestTimes::cleanup() {
    setZone("UTC");
}

void TestTimes::bothFormsNameTheSameInstant_data() {
    QTest::addColumn<double>("unixSeconds");
    QTest::addColumn<double>("referenceSeconds");
    QTest::addColumn<QString>("utc");
    const auto row = [](double unixSeconds, double referenceSeconds, const char *utc) {
        QTest::newRow(utc) << unixSeconds << referenceSeconds << QString::fromLatin1(utc);
    };
    row(0.0, -978307200.0, "1970-01-01T00:00:00.000Z");
    row(978307200.0, 0.0, "2001-01-01T00:00:00.000Z");
    row(1700000000.125, 721692800.125, "2023-11-14T22:13:20.125Z");
    row(-1.5, -978307201.5, "1969-12-31T23:59:58.500Z");
    row(253402300799.0, 252423993599.0, "9999-12-31T23:59:59.000Z");
}

void TestTimes::bothFormsNameTheSameInstant() {
    QFETCH(double, unixSeconds);
    QFETCH(double, referenceSeconds);
    QTEST(times::fromUnixSeconds(unixSeconds).toUTC().toString(Qt::ISODateWithMs), "utc");
    QCOMPARE(times::fromReferenceSeconds(referenceSeconds), times::fromUnixSeconds(unixSeconds));
    QCOMPARE(times::toUnixSeconds(times::fromUnixSeconds(unixSeconds)), unixSeconds);
    QCOMPARE(times::toReferenceSeconds(times::fromUnixSeconds(unixSeconds)), referenceSeconds);
}

void TestTimes::numbersOutsideTheCalendarStayInside_data() {
    QTest::addColumn<double>("seconds");
    QTest::addColumn<int>("year");
    QTest::newRow("largest") << std::numeric_limits<double>::max() << 9999;
    QTest::newRow("lowest") << std::numeric_limits<double>::lowest() << 1;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << 9999;
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << 1970;
    QTest::newRow("milliseconds instead of seconds") << 1.7e12 << 9999;
}

void TestTimes::numbersOutsideTheCalendarStayInside() {
    QFETCH(double, seconds);
    const QDateTime time = times::fromUnixSeconds(seconds).toUTC();
    QVERIFY(time.isValid());
    QTEST(time.date().year(), "year");
    QVERIFY(times::fromReferenceSeconds(seconds).isValid());
}

void TestTimes::readingWhatWasWrittenChangesNothing_data() {
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<double>("seconds");
    // The hour that a clock shows twice, the hour it skips, and times before zones had whole hours.
    for (const char *zone : {"UTC", "America/New_York", "Europe/Moscow", "Australia/Lord_Howe"}) {
        for (const double seconds :
             {1699162200.25, 1699165800.25, 1678604400.0, -4000000000.0, -62135596800.0, 253402300799.0})
            QTest::addRow("%s %.2f", zone, seconds) << QByteArray(zone) << seconds;
    }
}

void TestTimes::readingWhatWasWrittenChangesNothing() {
    QFETCH(QByteArray, zone);
    QFETCH(double, seconds);
    setZone(zone);
    const QDateTime time = times::fromUnixSeconds(seconds);
    QVERIFY(time.isValid());
    QCOMPARE(times::toUnixSeconds(time), seconds);
    QCOMPARE(times::fromReferenceSeconds(times::toReferenceSeconds(time)), time);
}

QTEST_GUILESS_MAIN(TestTimes)

#include "tst_times.moc"
