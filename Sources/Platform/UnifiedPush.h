// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/RemoteNotifications.h"
#include "Platform/UserDefaults.h"

#include <QDBusConnection>
#include <QDBusContext>

namespace orvane {

/// Remote push by UnifiedPush (D-Bus interfaces Distributor1 and Connector1): the first distributor by name
/// that runs on the bus or can be started there. The device token is the endpoint's URL. Main thread.
class UnifiedPush : public RemoteNotifications, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.unifiedpush.Connector1")

public:
    /// The token by which the distributor knows this installation is kept in `defaults`.
    explicit UnifiedPush(const QDBusConnection &bus = QDBusConnection::sessionBus(),
                         std::unique_ptr<UserDefaults> defaults = std::make_unique<UserDefaults>());

    void registerForRemoteNotifications() override;

public Q_SLOTS:
    // Called by the distributor. Whatever carries another token is dropped.
    Q_NOREPLY void NewEndpoint(const QString &token, const QString &endpoint);
    Q_NOREPLY void Message(const QString &token, const QByteArray &message, const QString &identifier);
    Q_NOREPLY void Unregistered(const QString &token);

private:
    void listNames(const QString &method, QStringList found);
    void registerAt(const QString &distributor);
    QString connectorToken();

    QDBusConnection m_bus;
    std::unique_ptr<UserDefaults> m_defaults;
};

} // namespace orvane
