// SPDX-License-Identifier: MIT
#pragma once

#include "Model/Enumerations.h"
#include "Model/Record.h"

#include <QDateTime>
#include <QList>
#include <QSet>
#include <QString>

namespace orvane {

#define POLL_OPTION(FIELD, OPTIONAL, ENUM)                                                                   \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, text)                                                                                     \
    FIELD(QSet<QString>, voters)

/// One answer of a poll; `voters` holds user ids.
class PollOption {
    Q_GADGET
    QML_VALUE_TYPE(pollOption)
    RECORD(PollOption, POLL_OPTION)
};

#define MESSENGER_POLL(FIELD, OPTIONAL, ENUM)                                                                \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, chatID)                                                                                   \
    FIELD(QString, creatorID)                                                                                \
    FIELD(QString, question)                                                                                 \
    FIELD(QList<orvane::PollOption>, options)                                                                \
    FIELD(bool, isAnonymous)                                                                                 \
    FIELD(bool, isMultipleChoice)                                                                            \
    FIELD(QDateTime, createdAt)

/// A poll with its options in creation order.
class MessengerPoll {
    Q_GADGET
    QML_VALUE_TYPE(messengerPoll)
    RECORD(MessengerPoll, MESSENGER_POLL)
public:
    using PollOption = orvane::PollOption;
};

} // namespace orvane
