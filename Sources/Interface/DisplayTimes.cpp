// SPDX-License-Identifier: MIT
#include "Interface/DisplayTimes.h"

#include <QElapsedTimer>
#include <QLocale>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

/// Every row that comes into view asks for it, and the system looks at the file of its time zone each time.
QDate today() {
    static QDate date;
    static QElapsedTimer sinceAsked;
    if (!sinceAsked.isValid() || sinceAsked.hasExpired(1000)) {
        date = QDate::currentDate();
        sinceAsked.start();
    }
    return date;
}

QString briefOn(QDate thisDay, const QDateTime &time) {
    const QDateTime local = time.toLocalTime();
    const QDate date = local.date();
    const qint64 daysAgo = date.daysTo(thisDay);
    if (daysAgo == 0)
        return DisplayTimes::clock(local);
    if (daysAgo > 0 && daysAgo < 7)
        return QLocale().standaloneDayName(date.dayOfWeek(), QLocale::ShortFormat);
    return QLocale().toString(date, QLocale::ShortFormat);
}

} // namespace

QString DisplayTimes::clock(const QDateTime &time) {
    return time.toLocalTime().toString(u"HH:mm"_s);
}

QString DisplayTimes::brief(const QDateTime &time) {
    return briefOn(today(), time);
}

QString DisplayTimes::day(const QDateTime &time) {
    return day(time, QDateTime::currentDateTime());
}

QString DisplayTimes::full(const QDateTime &time) {
    return QLocale().toString(time.toLocalTime(), QLocale::LongFormat);
}

QString DisplayTimes::brief(const QDateTime &time, const QDateTime &now) {
    return briefOn(now.toLocalTime().date(), time);
}

QString DisplayTimes::day(const QDateTime &time, const QDateTime &now) {
    const QDate date = time.toLocalTime().date();
    const QDate today = now.toLocalTime().date();
    if (date == today)
        return u"Today"_s;
    if (date == today.addDays(-1))
        return u"Yesterday"_s;
    return QLocale().toString(date, date.year() == today.year() ? u"d MMMM"_s : u"d MMMM yyyy"_s);
}

} // namespace orvane
