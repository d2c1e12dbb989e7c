// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerMessage.h"

#include <QJsonObject>

#include <optional>

namespace orvane {

/// A message that came to one of the chats, as the list shows it: dated now, its content as delivered.
struct ArrivedMessage {
    QString chatID;
    MessengerMessage message;

    /// Absent without the texts `chat_id`, and `content` and `sender_id` within `message`. Pure.
    static std::optional<ArrivedMessage> from(const QJsonObject &event);
};

/// Somebody came or went.
struct PresenceChange {
    QString userID;
    UserStatus status{};

    /// Absent without the texts `user_id` and `status`. Pure.
    static std::optional<PresenceChange> from(const QJsonObject &event);
};

} // namespace orvane
