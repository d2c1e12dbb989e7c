// SPDX-License-Identifier: MIT
#include "Interface/DisplayTimes.h"
#include "Support/TestMain.h"

#include <QLocale>
#include <QTimeZone>

using namespace Qt::StringLiterals;

using namespace orvane;

class TestDisplayTimes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        qputenv("TZ", "Europe/Berlin");
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    }
    void theFormFollowsTheDistance_data();
    void theFormFollowsTheDistance();
};

void TestDisplayTimes::theFormFollowsTheDistance_data() {
    QTest::addColumn<QString>("time");
    QTest::addColumn<QString>("brief");
    QTest::addColumn<QString>("day");
    // Seen at 00:30 local time of Thursday, 5 March 2026, which is still Wednesday in UTC.
    QTest::newRow("now") << "2026-03-04T23:30:00Z"
                         << "00:30"
                         << "Today";
    QTest::newRow("first minute of today") << "2026-03-04T23:00:00Z"
                                           << "00:00"
                                           << "Today";
    QTest::newRow("last minute of yesterday") << "2026-03-04T22:59:00Z"
                                              << "Wed"
                                              << "Yesterday";
    QTest::newRow("six days ago") << "2026-02-27T12:00:00Z"
                                  << "Fri"
                                  << "27 February";
    QTest::newRow("a week ago") << "2026-02-26T12:00:00Z"
                                << "26/02/2026"
                                << "26 February";
    QTest::newRow("last year") << "2025-12-31T12:00:00Z"
                               << "31/12/2025"
                               << "31 December 2025";
    QTest::newRow("tomorrow, by a clock that is ahead") << "2026-03-06T12:00:00Z"
                                                        << "06/03/2026"
                                                        << "6 March";
}

void TestDisplayTimes::theFormFollowsTheDistance() {
    QFETCH(QString, time);
    QFETCH(QString, brief);
    QFETCH(QString, day);
    const QDateTime now = QDateTime::fromString(u"2026-03-04T23:30:00Z"_s, Qt::ISODate);
    const QDateTime then = QDateTime::fromString(time, Qt::ISODate);
    QCOMPARE(DisplayTimes::brief(then, now), brief);
    QCOMPARE(DisplayTimes::day(then, now), day);
}

ORVANE_TEST_MAIN(TestDisplayTimes)
#include "tst_display_times.moc"
