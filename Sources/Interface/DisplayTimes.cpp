#include "Interface/DisplayTimes.h"

#include <QLocale>

namespace orvane {

QString DisplayTimes::clock(const QDateTime &time) {
    return time.toLocalTime().toString(QStringLiteral("HH:mm"));
}

QString DisplayTimes::brief(const QDateTime &time) {
    return brief(time, QDateTime::currentDateTime());
}

QString DisplayTimes::day(const QDateTime &time) {
    return day(time, QDateTime::currentDateTime());
}

QString DisplayTimes::full(const QDateTime &time) {
    return QLocale().toString(time.toLocalTime(), QLocale::LongFormat);
}

QString DisplayTimes::brief(const QDateTime &time, const QDateTime &now) {
    const QDate date = time.toLocalTime().date();
    const qint64 daysAgo = date.daysTo(now.toLocalTime().date());
    if (daysAgo == 0)
        return clock(time);
    if (daysAgo > 0 && daysAgo < 7)
        return QLocale().standaloneDayName(date.dayOfWeek(), QLocale::ShortFormat);
    return QLocale().toString(date, QLocale::ShortFormat);
}

QString DisplayTimes::day(const QDateTime &time, const QDateTime &now) {
    const QDate date = time.toLocalTime().date();
    const QDate today = now.toLocalTime().date();
    if (date == today)
        return QStringLiteral("Today");
    if (date == today.addDays(-1))
        return QStringLiteral("Yesterday");
    return QLocale().toString(date, date.year() == today.year() ? QStringLiteral("d MMMM")
                                                                : QStringLiteral("d MMMM yyyy"));
}

} // namespace orvane
