#include "Platform/LauncherBadge.h"

#include <QDBusMessage>
#include <QDBusServiceWatcher>

namespace orvane {

LauncherBadge::LauncherBadge(const QDBusConnection &bus)
    : m_bus(bus) {
    // Docks take this name; one that was just started has missed what was said before.
    auto *docks = new QDBusServiceWatcher(QStringLiteral("com.canonical.Unity"), m_bus,
                                          QDBusServiceWatcher::WatchForRegistration, this);
    connect(docks, &QDBusServiceWatcher::serviceRegistered, this, &LauncherBadge::update);
}

void LauncherBadge::show(qint64 count, const QString &label) {
    m_count = count;
    m_visible = !label.isEmpty();
    update();
}

void LauncherBadge::update() {
    QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/com/orvanetalk/OrvaneTalk"),
                                                     QStringLiteral("com.canonical.Unity.LauncherEntry"),
                                                     QStringLiteral("Update"));
    signal << QStringLiteral("application://com.orvanetalk.OrvaneTalk.desktop")
           << QVariantMap{{QStringLiteral("count"), m_count}, {QStringLiteral("count-visible"), m_visible}};
    m_bus.send(signal);
}

} // namespace orvane
