// SPDX-License-Identifier: MIT
#include "Application/AppDelegate.h"

#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Base/Task.h"

using namespace Qt::StringLiterals;

namespace orvane {

AppDelegate::AppDelegate(RemoteNotifications &push, MessengerSession &session, MessengerAPI &api)
    : m_push(push)
    , m_session(session)
    , m_api(api) {
    connect(&push, &RemoteNotifications::registered, this,
            &AppDelegate::didRegisterForRemoteNotificationsWithDeviceToken);
    connect(&push, &RemoteNotifications::failed, this,
            &AppDelegate::didFailToRegisterForRemoteNotificationsWithError);
    connect(&push, &RemoteNotifications::received, this, &AppDelegate::didReceiveRemoteNotification);
}

void AppDelegate::didRegisterForRemoteNotificationsWithDeviceToken(const QByteArray &deviceToken) {
    const QString token = QString::fromLatin1(deviceToken.toHex());
    logLine(u"🔔 Push token registered"_s);
    launch(dropped(m_api.registerPushToken(token, m_session.userIdText(), u"macos"_s), "push is optional"));
}

void AppDelegate::didFailToRegisterForRemoteNotificationsWithError(const QString &description) {
    logLine(u"⚠️ Push registration failed: "_s + description);
}

void AppDelegate::didReceiveRemoteNotification(const QByteArray &payload) {
    const auto object = json::readObject(payload);
    if (object && json::text(*object, u"chat_id"))
        logLine(u"📨 Push received"_s);
}

} // namespace orvane
