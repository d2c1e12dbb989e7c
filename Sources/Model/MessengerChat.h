// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerMessage.h"
#include "Model/MessengerUser.h"

namespace orvane {

#define MESSENGER_CHAT_SETTINGS(FIELD, OPTIONAL, ENUM)                                                       \
    OPTIONAL(QDateTime, muteUntil)                                                                           \
    OPTIONAL(double, disappearingMessages)

/// `disappearingMessages` in seconds.
class MessengerChatSettings {
    Q_GADGET
    QML_VALUE_TYPE(messengerChatSettings)
    RECORD(MessengerChatSettings, MESSENGER_CHAT_SETTINGS)
};

#define MESSENGER_CHAT(FIELD, OPTIONAL, ENUM)                                                                \
    FIELD(QString, id)                                                                                       \
    ENUM(ChatType, type)                                                                                     \
    OPTIONAL(QString, title)                                                                                 \
    FIELD(QList<QString>, participants)                                                                      \
    OPTIONAL(MessengerMessage, lastMessage)                                                                  \
    FIELD(qint64, unreadCount)                                                                               \
    FIELD(QDateTime, createdAt)                                                                              \
    FIELD(QDateTime, updatedAt)                                                                              \
    FIELD(bool, aiEnabled)                                                                                   \
    FIELD(MessengerChatSettings, settings)                                                                   \
    FIELD(bool, federated)                                                                                   \
    FIELD(bool, zkMode)                                                                                      \
    OPTIONAL(QString, roomId)

/// A conversation; `participants` holds user ids in decimal text.
class MessengerChat {
    Q_GADGET
    QML_VALUE_TYPE(messengerChat)
    /// Of a group or a channel, in place of a person's initial; empty for a person.
    Q_PROPERTY(QString symbol READ symbol)
    RECORD(MessengerChat, MESSENGER_CHAT)
public:
    /// The name under which the chat is shown to `myUserID`.
    QString displayName(const QString &myUserID, const Contacts &contacts) const;

    /// The same for eyes and ears: "Chat" where the name has nothing that could be seen.
    QString visibleName(const QString &myUserID, const Contacts &contacts) const;

    /// The id that the chat has its colour from: that of the other person in a direct chat, else its own.
    QString hueId(const QString &myUserID) const;

    /// The first participant other than `myUserID`, in groups too; empty when there is none.
    QString peerId(const QString &myUserID) const;

    QString symbol() const;
};

} // namespace orvane
