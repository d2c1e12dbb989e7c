// SPDX-License-Identifier: MIT
#pragma once

#include "Model/Enumerations.h"
#include "Model/MessengerPoll.h"
#include "Model/Record.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

namespace orvane {

#define FORWARD_INFO(FIELD, OPTIONAL, ENUM)                                                                  \
    FIELD(QString, originalChatID)                                                                           \
    FIELD(QString, originalSenderID)                                                                         \
    FIELD(QString, originalSenderName)                                                                       \
    FIELD(QDateTime, forwardedAt)

/// Where a forwarded message came from.
class ForwardInfo {
    Q_GADGET
    QML_VALUE_TYPE(forwardInfo)
    RECORD(ForwardInfo, FORWARD_INFO)
};

#define ATTACHMENT(FIELD, OPTIONAL, ENUM)                                                                    \
    ENUM(AttachmentType, type)                                                                               \
    OPTIONAL(QUrl, url)                                                                                      \
    OPTIONAL(QUrl, localPath)                                                                                \
    OPTIONAL(QString, mimeType)                                                                              \
    OPTIONAL(qint64, fileSize)

/// A file that belongs to a message; `fileSize` in bytes.
class Attachment {
    Q_GADGET
    QML_VALUE_TYPE(attachment)
    RECORD(Attachment, ATTACHMENT)
};

#define MESSAGE_REACTION(FIELD, OPTIONAL, ENUM)                                                              \
    FIELD(QString, emoji)                                                                                    \
    FIELD(QList<QString>, userIDs)

/// One emoji and everyone who reacted with it.
class MessageReaction {
    Q_GADGET
    QML_VALUE_TYPE(messageReaction)
    RECORD(MessageReaction, MESSAGE_REACTION)
};

#define MESSENGER_MESSAGE(FIELD, OPTIONAL, ENUM)                                                             \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, chatID)                                                                                   \
    FIELD(QString, senderID)                                                                                 \
    ENUM(MessageType, type)                                                                                  \
    FIELD(QString, content)                                                                                  \
    FIELD(QDateTime, timestamp)                                                                              \
    OPTIONAL(QDateTime, editedAt)                                                                            \
    FIELD(QList<orvane::MessageReaction>, reactions)                                                         \
    OPTIONAL(QString, replyToID)                                                                             \
    OPTIONAL(ForwardInfo, forwardedFrom)                                                                     \
    OPTIONAL(double, ttl)                                                                                    \
    FIELD(bool, isRead)                                                                                      \
    ENUM(DeliveryStatus, deliveryStatus)                                                                     \
    OPTIONAL(Attachment, attachment)                                                                         \
    OPTIONAL(MessengerPoll, poll)                                                                            \
    FIELD(bool, isStarred)

/// One message of a chat; `ttl` in seconds.
class MessengerMessage {
    Q_GADGET
    QML_VALUE_TYPE(messengerMessage)
    RECORD(MessengerMessage, MESSENGER_MESSAGE)
public:
    /// A message object of the server's history as a record that counts as sent and read. Absent when `id`,
    /// `sender_id`, `content` or `created_at` is missing or of another type. `content` is taken as it came.
    static std::optional<MessengerMessage> fromHistory(const QString &chatID, const QJsonObject &raw);

    /// The type under `type`; `text` when the key is missing or its value unknown.
    static MessageType typeOf(const QJsonObject &raw);

    /// Folds the server's list of single reactions into one record an emoji, in the order in which the emoji
    /// first occur, so that all see them alike. Elements without a text `emoji` and a text or integer
    /// `user_id` are skipped.
    static QList<MessageReaction> parseReactions(const QJsonArray &list);
};

} // namespace orvane
