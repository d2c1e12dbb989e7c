// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/DockBadge.h"

#include <QDBusConnection>
#include <QObject>

namespace orvane {

/// The badge on the program's launcher in docks and task bars, by the signal `Update` of
/// com.canonical.Unity.LauncherEntry. They draw the count themselves. Main thread.
class LauncherBadge : public QObject, public DockBadge {
    Q_OBJECT

public:
    explicit LauncherBadge(const QDBusConnection &bus = QDBusConnection::sessionBus());

    void show(qint64 count, const QString &label) override;

private:
    void update();

    QDBusConnection m_bus;
    qint64 m_count = 0;
    bool m_visible = false;
};

} // namespace orvane
