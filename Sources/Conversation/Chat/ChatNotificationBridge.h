// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/UserNotifications.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace orvane {

/// Tells the user of a message, unless its chat is open. Main thread.
class ChatNotificationBridge {
public:
    /// Seconds since 1970, with a fraction.
    using Clock = std::function<double()>;

    /// Asks for permission where the platform wants that.
    explicit ChatNotificationBridge(std::unique_ptr<UserNotifications> notifications, Clock clock = {});

    /// Over the desktop's notifications; made when the first message comes.
    static ChatNotificationBridge &shared();

    /// The chat that the chat screen shows. Whether its window has the focus plays no part.
    std::optional<QString> activeChatID;

    void notify(const QString &chatID, const QString &chatName, const QString &senderName,
                const QString &message);

private:
    std::unique_ptr<UserNotifications> m_notifications;
    Clock m_clock;
};

} // namespace orvane
