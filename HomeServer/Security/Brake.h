// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QList>
#include <QString>

namespace orvane::homeserver {

// How often something may be done: `most` times within a window, for each key. It lives in memory only;
// times are Unix seconds given by the caller.
class Brake {
public:
    Brake(qsizetype most, double windowSeconds)
        : m_most(most)
        , m_window(windowSeconds) {}

    // Whether it may be done once more. If so, it counts as done.
    bool allows(const QString &key, double now);

private:
    void dropOld(QList<double> &times, double now) const;

    qsizetype m_most;
    double m_window;
    QHash<QString, QList<double>> m_times;
};

} // namespace orvane::homeserver
