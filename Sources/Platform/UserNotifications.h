// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QString>

namespace orvane {

using namespace Qt::StringLiterals;

/// Posted when a chat is to be opened: `chat_id`.
inline const auto orvaneOpenChat = u"orvaneOpenChat"_s;

/// What a notification says. All texts are shown as they are, never as markup.
struct NotificationContent {
    QString title;
    QString subtitle;
    QString body;
    /// Posted as `orvaneOpenChat` when the user activates the notification.
    QJsonObject userInfo;
};

/// The desktop's notifications. Main thread; nothing waits.
class UserNotifications {
public:
    virtual ~UserNotifications() = default;

    /// Asks the user, where the platform has such a step. Whatever they say, all goes on alike.
    virtual void requestAuthorization() = 0;
    /// Shows a notification at once, with the default sound. One with an identifier that was there before
    /// would replace it. A failure goes unnoticed.
    virtual void add(const QString &identifier, const NotificationContent &content) = 0;

protected:
    UserNotifications() = default;
    UserNotifications(const UserNotifications &) = default;
    UserNotifications &operator=(const UserNotifications &) = default;
};

} // namespace orvane
