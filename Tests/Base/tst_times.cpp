// SPDX-License-Identifier: MIT
#include "Base/Times.h"
#include "Support/InRow.h"

#include <QTimeZone>

#include <ctime>
#include <limits>

using namespace orvane;

class TestTimes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bothFormsNameTheSameInstant() {
        const auto check = [](double unixSeconds, double referenceSeconds, const char *utc) {
            IN_ROW(utc);
            QCOMPARE(times::fromUnixSeconds(unixSeconds).toUTC().toString(Qt::ISODateWithMs), utc);
            QCOMPARE(times::fromReferenceSeconds(referenceSeconds), times::fromUnixSeconds(unixSeconds));
            QCOMPARE(times::toUnixSeconds(times::fromUnixSeconds(unixSeconds)), unixSeconds);
            QCOMPARE(times::toReferenceSeconds(times::fromUnixSeconds(unixSeconds)), referenceSeconds);
        };
        check(0.0, -978307200.0, "1970-01-01T00:00:00.000Z");
        check(978307200.0, 0.0, "2001-01-01T00:00:00.000Z");
        check(1700000000.125, 721692800.125, "2023-11-14T22:13:20.125Z");
        check(-1.5, -978307201.5, "1969-12-31T23:59:58.500Z");
        check(253402300799.0, 252423993599.0, "9999-12-31T23:59:59.000Z");
    }

    void numbersOutsideTheCalendarStayInside() {
        using Limits = std::numeric_limits<double>;
        const auto check = [](double seconds, int year) {
            IN_ROW(QByteArray::number(seconds));
            const QDateTime time = times::fromUnixSeconds(seconds).toUTC();
            QVERIFY(time.isValid());
            QCOMPARE(time.date().year(), year);
            QVERIFY(times::fromReferenceSeconds(seconds).isValid());
        };
        check(Limits::max(), 9999);
        check(Limits::lowest(), 1);
        check(Limits::infinity(), 9999);
        check(Limits::quiet_NaN(), 1970);
        // Milliseconds instead of seconds.
        check(1.7e12, 9999);
    }

    void readingWhatWasWrittenChangesNothing() {
        // The hour that a clock shows twice, the hour it skips, and times before zones had whole hours.
        for (const char *zone : {"UTC", "America/New_York", "Europe/Moscow", "Australia/Lord_Howe"}) {
            setZone(zone);
            for (const double seconds : {1699162200.25, 1699165800.25, 1678604400.0, -4000000000.0,
                                         -62135596800.0, 253402300799.0}) {
                IN_ROW(zone + QByteArray::number(seconds, 'f'));
                const QDateTime time = times::fromUnixSeconds(seconds);
                QVERIFY(time.isValid());
                QCOMPARE(times::toUnixSeconds(time), seconds);
                QCOMPARE(times::fromReferenceSeconds(times::toReferenceSeconds(time)), time);
            }
        }
    }

    void cleanup() { setZone("UTC"); }

private:
    static void setZone(const QByteArray &name) {
        qputenv("TZ", name);
        tzset();
    }
};

QTEST_GUILESS_MAIN(TestTimes)
#include "tst_times.moc"
