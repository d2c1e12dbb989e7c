// SPDX-License-Identifier: MIT
#pragma once

#include "Base/NotificationCentre.h"
#include "Platform/UserNotifications.h"

#include <QDBusConnection>
#include <QHash>
#include <QList>
#include <QObject>
#include <QStringList>

#include <optional>

namespace orvane {

/// Notifications over org.freedesktop.Notifications (Desktop Notifications Specification 1.2): the title is
/// the summary; the subtitle stands in a line of its own over the body, unless it says what the title says. A
/// desktop without such a service shows none. Main thread.
class DesktopNotifications : public QObject, public UserNotifications {
    Q_OBJECT

public:
    explicit DesktopNotifications(const QDBusConnection &bus = QDBusConnection::sessionBus(),
                                  NotificationCentre &centre = NotificationCentre::shared());

    /// There is no such step here.
    void requestAuthorization() override {}
    void add(const QString &identifier, const NotificationContent &content) override;

private Q_SLOTS:
    void activated(uint id, const QString &action);
    void closed(uint id, uint reason);
    void takeActivationToken(uint id, const QString &token);

private:
    void askCapabilities();
    void show(const NotificationContent &content);

    QDBusConnection m_bus;
    NotificationCentre &m_centre;
    /// Absent until the service has said what it can do.
    std::optional<QStringList> m_capabilities;
    bool m_asking = false;
    QList<NotificationContent> m_waiting;
    /// By the service's number.
    QHash<uint, QJsonObject> m_shown;
};

/// What the service is sent as its body: bounded, without control characters, escaped where it reads markup.
/// Pure.
QString notificationBody(const NotificationContent &content, bool readsMarkup);

} // namespace orvane
