// SPDX-License-Identifier: MIT
#pragma once

#include "Base/DescribedError.h"
#include "Model/MessengerChat.h"

/// The shapes of the chat list answer, decoded strictly: a required key that is missing or any key of another
/// type fails the whole answer. null counts as absent where a key is optional.
namespace orvane {

class DecodingError : public DescribedError {
    using DescribedError::DescribedError;
};

struct AP {
    qint64 user_id = 0;

    bool operator==(const AP &) const = default;
};

struct AC {
    QString id;
    std::optional<QString> type;
    std::optional<QString> title;
    std::optional<QList<AP>> participants;
    std::optional<QString> last_message;
    std::optional<double> last_msg_at;
    std::optional<qint64> unread_count;
    std::optional<bool> ai_enabled;
    std::optional<bool> federated;
    std::optional<bool> zk_mode;
    std::optional<QString> room_id;

    bool operator==(const AC &) const = default;

    /// The chat as the client holds it, dated `now`. The preview message gets a fresh id and no sender.
    MessengerChat toChat(const QDateTime &now) const;
};

struct CR {
    QList<AC> chats;

    bool operator==(const CR &) const = default;

    /// Throws JsonError for bytes that are no JSON and DecodingError for another shape.
    static CR decode(const QByteArray &bytes);
};

} // namespace orvane
