// SPDX-License-Identifier: MIT
#pragma once

#include "Model/Enumerations.h"
#include "Model/Record.h"

#include <QDateTime>
#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QUrl>

#include <optional>

namespace orvane {

#define MESSENGER_USER(FIELD, OPTIONAL, ENUM)                                                                \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, displayName)                                                                              \
    OPTIONAL(QString, username)                                                                              \
    OPTIONAL(QUrl, avatarURL)                                                                                \
    ENUM(UserStatus, status)                                                                                 \
    OPTIONAL(QDateTime, lastSeen)                                                                            \
    FIELD(bool, isBlocked)                                                                                   \
    FIELD(bool, isAI)

/// A person, a bot or the assistant.
class MessengerUser {
    Q_GADGET
    QML_VALUE_TYPE(messengerUser)
    RECORD(MessengerUser, MESSENGER_USER)
public:
    /// The server's record of a contact; absent without a text `id`. Who has no name is called by the
    /// username.
    static std::optional<MessengerUser> fromContact(const QJsonObject &record);
};

/// What the server says of somebody's presence: `online` for "online", else `offline`.
UserStatus presenceOf(const QString &status);

/// User id to user.
using Contacts = QHash<QString, MessengerUser>;

/// The display name of somebody known, else `otherwise`.
QString nameOf(const QString &userID, const Contacts &contacts, const QString &otherwise);

} // namespace orvane
