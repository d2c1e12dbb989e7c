// SPDX-License-Identifier: MIT
#include "Platform/LauncherBadge.h"

#include <QDBusMessage>
#include <QDBusServiceWatcher>

using namespace Qt::StringLiterals;

namespace orvane {

LauncherBadge::LauncherBadge(const QDBusConnection &bus)
    : m_bus(bus) {
    // Docks take this name; one that was just started has missed what was said before.
    auto *docks = new QDBusServiceWatcher(u"com.canonical.Unity"_s, m_bus,
                                          QDBusServiceWatcher::WatchForRegistration, this);
    connect(docks, &QDBusServiceWatcher::serviceRegistered, this, &LauncherBadge::update);
}

void LauncherBadge::show(qint64 count, const QString &label) {
    m_count = count;
    m_visible = !label.isEmpty();
    update();
}

void LauncherBadge::update() {
    QDBusMessage signal = QDBusMessage::createSignal(u"/com/orvanetalk/OrvaneTalk"_s,
                                                     u"com.canonical.Unity.LauncherEntry"_s, u"Update"_s);
    signal << u"application://com.orvanetalk.OrvaneTalk.desktop"_s
           << QVariantMap{{u"count"_s, m_count}, {u"count-visible"_s, m_visible}};
    m_bus.send(signal);
}

} // namespace orvane
