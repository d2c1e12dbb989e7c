// SPDX-License-Identifier: MIT
#include "Interface/DisplayTimes.h"
#include "Interface/Theme.h"
#include "Support/InRow.h"
#include "Support/TestMain.h"

#include <QLocale>
#include <QSet>
#include <QSignalSpy>
#include <QTimeZone>

#include <cmath>

using namespace orvane;

// What the kit makes of colours, names and times.
class TestTheme : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyPairCanBeRead() {
        for (const OrvaneTheme theme : allThemes()) {
            Theme tokens;
            tokens.use(theme);
            const auto check = [theme](const char *name, const QColor &ink, const QColor &ground,
                                       double wanted = 4.5) {
                IN_ROW(rawValue(theme).toUtf8() + ' ' + name + ' ' + ground.name().toUtf8());
                QVERIFY2(Theme::contrast(ink, ground) >= wanted,
                         QByteArray::number(Theme::contrast(ink, ground)));
            };
            check("onAccent", tokens.onAccent, tokens.accent);
            check("onOwnBubble", tokens.onOwnBubble, tokens.ownBubble);
            check("dimmedOnOwnBubble", tokens.dimmedOnOwnBubble, tokens.ownBubble);
            check("danger", tokens.danger, tokens.background);
            check("danger", tokens.danger, tokens.surface);
            check("text", tokens.text, tokens.selection);
            check("dimmed", tokens.dimmed, tokens.selection);
            for (const QColor &ground : {tokens.background, tokens.surface, tokens.raised})
                check("accent", tokens.accent, ground);
            for (const QColor &ground : {tokens.background, tokens.surface, tokens.raised, tokens.pressed}) {
                check("text", tokens.text, ground);
                check("dimmed", tokens.dimmed, ground);
                check("faint", tokens.faint, ground, 3.0);
            }
        }
    }

    void contrastIsThatOfTheStandard() {
        const auto check = [](const QColor &a, const QColor &b, double ratio) {
            IN_ROW(a.name().toUtf8() + ' ' + b.name().toUtf8());
            QVERIFY(std::abs(Theme::contrast(a, b) - ratio) < 0.01);
        };
        check(Qt::black, Qt::white, 21.0);
        check(Qt::white, Qt::black, 21.0);
        check(Qt::red, Qt::red, 1.0);
        // The grey that is known for just failing, and its neighbour that just passes.
        check(QColor(0x77, 0x77, 0x77), Qt::white, 4.48);
        check(QColor(0x76, 0x76, 0x76), Qt::white, 4.54);
    }

    void theInitialIsWhatPeopleSeeAsOneCharacter() {
        QCOMPARE(Theme().initialOf(" анна"), "А");
        QCOMPARE(Theme().initialOf(" \n"), "?");
        QCOMPARE(Theme().initialOf("😀 Ben"), "😀");
        QCOMPARE(Theme().initialOf("🇩🇪 Team"), "🇩🇪");
        QCOMPARE(Theme().initialOf("e\u0301lan"), "E\u0301");
        // Marks without end.
        QCOMPARE(Theme().initialOf("a" + QString(10'000, u'\u0301')), "A" + QString(15, u'\u0301'));
    }

    void nothingTakesTimeWhereNothingShouldMove() {
        Theme tokens;
        QSignalSpy told(&tokens, &Theme::motionChanged);
        QVERIFY(tokens.property("panelDuration").toInt() > tokens.property("hoverDuration").toInt());
        QVERIFY(tokens.setProperty("reducedMotion", true));
        QCOMPARE(tokens.property("panelDuration").toInt() + tokens.property("hoverDuration").toInt(), 0);
        QCOMPARE(told.size(), 1);
    }

    void initialsCanBeReadOnEveryHueAndAPersonKeepsTheirs() {
        const Theme tokens;
        QSet<QRgb> seen;
        for (int id = 0; id < 500; ++id) {
            const QColor hue = tokens.hueOf(QString::number(id));
            QVERIFY(Theme::contrast(Qt::white, hue) >= 4.5);
            QCOMPARE(tokens.hueOf(QString::number(id)), hue);
            seen.insert(hue.rgb());
        }
        QCOMPARE(seen.size(), 8);
    }

    void initTestCase() {
        qputenv("TZ", "Europe/Berlin");
        QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    }

    void theFormFollowsTheDistance() {
        // Seen at 00:30 local time of Thursday, 5 March 2026, which is still Wednesday in UTC.
        const auto check = [](const char *time, const QString &brief, const QString &day) {
            IN_ROW(time);
            const QDateTime now = QDateTime::fromString("2026-03-04T23:30:00Z", Qt::ISODate);
            const QDateTime then = QDateTime::fromString(time, Qt::ISODate);
            QCOMPARE(DisplayTimes::brief(then, now), brief);
            QCOMPARE(DisplayTimes::day(then, now), day);
        };
        check("2026-03-04T23:30:00Z", "00:30", "Today");
        check("2026-03-04T23:00:00Z", "00:00", "Today");
        check("2026-03-04T22:59:00Z", "Wed", "Yesterday");
        check("2026-02-27T12:00:00Z", "Fri", "27 February");
        check("2026-02-26T12:00:00Z", "26/02/2026", "26 February");
        check("2025-12-31T12:00:00Z", "31/12/2025", "31 December 2025");
        // Tomorrow, by a clock that is ahead.
        check("2026-03-06T12:00:00Z", "06/03/2026", "6 March");
    }
};

QTEST_MAIN(TestTheme)
#include "tst_theme.moc"
