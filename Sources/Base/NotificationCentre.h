// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

namespace orvane {

/// Carries announcements between parts of the process that don't know each other. Whoever listens picks by
/// name. Main thread.
class NotificationCentre : public QObject {
    Q_OBJECT

public:
    static NotificationCentre &shared();

    /// Everybody who listens has been told when the call returns.
    void post(const QString &name, const QJsonObject &userInfo) { Q_EMIT posted(name, userInfo); }

Q_SIGNALS:
    void posted(const QString &name, const QJsonObject &userInfo);
};

} // namespace orvane
