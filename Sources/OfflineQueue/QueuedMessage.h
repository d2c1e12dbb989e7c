// SPDX-License-Identifier: MIT
#pragma once

#include "Base/FreshId.h"
#include "Model/Record.h"

#include <QDateTime>
#include <QString>

namespace orvane {

#define QUEUED_MESSAGE(FIELD, OPTIONAL, ENUM)                                                                \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, chatID)                                                                                   \
    FIELD(QString, content)                                                                                  \
    FIELD(QString, type)                                                                                     \
    FIELD(QString, userID)                                                                                   \
    FIELD(QDateTime, timestamp)                                                                              \
    FIELD(qint64, retries)                                                                                   \
    FIELD(qint64, maxRetries)

/// A message that waits for the network. `id` is the idempotency key of its send, `content` its final form on
/// the wire, `userID` the sender in decimal text, `timestamp` when it was queued; `retries` of `maxRetries`
/// attempts have failed. A new one has a fresh id, this moment, and five attempts.
class QueuedMessage {
    Q_GADGET
    RECORD(QueuedMessage, QUEUED_MESSAGE)
public:
    QueuedMessage()
        : id(freshId())
        , timestamp(QDateTime::currentDateTimeUtc())
        , maxRetries(5) {}
};

} // namespace orvane
