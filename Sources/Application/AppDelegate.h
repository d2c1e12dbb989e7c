// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/RemoteNotifications.h"
#include "Server/MessengerAPI.h"
#include "Session/MessengerSession.h"

#include <QCoroTask>
#include <QObject>

namespace orvane {

/// What the platform tells the application of remote push. All live delivery runs over the event socket: a
/// push does nothing but a log line. Main thread; the collaborators outlive it and its tasks.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    AppDelegate(RemoteNotifications &push, MessengerSession &session = MessengerSession::shared(),
                MessengerAPI &api = MessengerAPI::shared());

    void applicationDidFinishLaunching() { m_push.registerForRemoteNotifications(); }

    /// Hands the token to the server, in hexadecimal, for the user of this moment or for "0".
    void didRegisterForRemoteNotificationsWithDeviceToken(const QByteArray &deviceToken);
    void didFailToRegisterForRemoteNotificationsWithError(const QString &description);
    void didReceiveRemoteNotification(const QByteArray &payload);

private:
    RemoteNotifications &m_push;
    MessengerSession &m_session;
    MessengerAPI &m_api;
};

} // namespace orvane
