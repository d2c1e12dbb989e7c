// SPDX-License-Identifier: MIT
#pragma once

#include "Model/Enumerations.h"
#include "Model/Record.h"

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QUrl>

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
};

/// User id to user.
using Contacts = QHash<QString, MessengerUser>;

} // namespace orvane
