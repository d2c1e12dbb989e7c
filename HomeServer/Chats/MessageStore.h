// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Operations/Call.h"

#include <QJsonArray>

#include <optional>

// Messages and what hangs on them.
namespace orvane::homeserver {

using namespace Qt::StringLiterals;

struct NewMessage {
    // The id that the sender's device knows it by; taken where it is a UUID and free.
    QString wantedId;
    QString chatId;
    QString type = u"text"_s;
    QString content;
    std::optional<QString> replyTo;
    std::optional<QJsonObject> forwardedFrom;
    std::optional<QJsonObject> zkPayload;
};

// Stores a message, tells every member's sockets but those of the sending device, and gives the robots of
// the chat their turn. Returns the record. The sender's membership is the caller's matter.
QJsonObject postMessage(Work &work, const NewMessage &message, const Caller &sender);

// The answer to a request that posts what `message` makes: done once for its idempotency key. A key whose
// message is gone is answered with 410.
Answer postOnce(Call &call, const std::function<NewMessage()> &message);

// Where a message stands and whose it is.
struct MessagePlace {
    qint64 seq = 0;
    QString chatId;
    qint64 senderId = 0;
};

// Refuses with 404 for no such message and with 403 for one in a chat the user is not in.
MessagePlace requireMessage(Database &database, const QString &messageId, qint64 userId);

// The latest `limit` messages of a chat, oldest first; strictly older than the message `before` if given.
QJsonArray messagePage(Database &database, const QString &chatId, qint64 userId,
                       const std::optional<QString> &before, qint64 limit);

// The records of the messages that `condition` (of `messages m`) chooses, in the order of `tail`.
QJsonArray messageRecords(Database &database, qint64 userId, const QString &condition,
                          const QVariantList &values, const QString &tail);

// A message's reactions: objects with `emoji` and `user_id`, in the order they were made.
QJsonArray reactionsOf(Database &database, const QString &messageId);

} // namespace orvane::homeserver
