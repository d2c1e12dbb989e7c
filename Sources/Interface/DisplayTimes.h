// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// Points in time in the words of the screens, in the desktop's time zone and language. QML sees it as the
/// singleton `DisplayTimes`. Main thread.
class DisplayTimes : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// "HH:mm".
    Q_INVOKABLE static QString clock(const QDateTime &time);
    /// The time today, the weekday within a week, else the date.
    Q_INVOKABLE static QString brief(const QDateTime &time);
    /// "Today", "Yesterday", the day and month of this year, else the whole date.
    Q_INVOKABLE static QString day(const QDateTime &time);
    Q_INVOKABLE static QString full(const QDateTime &time);

    static QString brief(const QDateTime &time, const QDateTime &now);
    static QString day(const QDateTime &time, const QDateTime &now);
};

} // namespace orvane
