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
    launch(registerToken(&m_api, token, m_session.userIdText()));
}

void AppDelegate::didFailToRegisterForRemoteNotificationsWithError(const QString &description) {
    logLine(u"⚠️ Push registration failed: "_s + description);
}

void AppDelegate::didReceiveRemoteNotification(const QByteArray &payload) {
    try {
        const auto object = json::parseObject(payload);
        if (object && json::text(*object, u"chat_id"))
            logLine(u"📨 Push received"_s);
    } catch (const JsonError &) {
        // Dropped on purpose: a push without a chat leaves no trace.
    }
}

QCoro::Task<void> AppDelegate::registerToken(MessengerAPI *api, QString deviceToken, QString userID) {
    try {
        co_await api->registerPushToken(deviceToken, userID, u"macos"_s);
    } catch (const std::exception &) {
        // Dropped on purpose: push is optional.
    }
}

} // namespace orvane
