#include "Application/AppDelegate.h"

#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Base/Task.h"

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
    logLine(QStringLiteral("🔔 Push token registered"));
    launch(registerToken(&m_api, token, m_session.userIdText()));
}

void AppDelegate::didFailToRegisterForRemoteNotificationsWithError(const QString &description) {
    logLine(QStringLiteral("⚠️ Push registration failed: ") + description);
}

void AppDelegate::didReceiveRemoteNotification(const QByteArray &payload) {
    try {
        const auto object = json::parseObject(payload);
        if (object && json::text(*object, u"chat_id"))
            logLine(QStringLiteral("📨 Push received"));
    } catch (const JsonError &) {
        // Dropped on purpose: a push without a chat leaves no trace.
    }
}

QCoro::Task<void> AppDelegate::registerToken(MessengerAPI *api, QString deviceToken, QString userID) {
    try {
        co_await api->registerPushToken(deviceToken, userID, QStringLiteral("macos"));
    } catch (const std::exception &) {
        // Dropped on purpose: push is optional.
    }
}

} // namespace orvane
