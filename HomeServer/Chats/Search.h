// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Operations/Call.h"

#include <QJsonArray>

// Full-text search over the messages a person may read.
namespace orvane::homeserver {

enum class Words { All, Any };

struct SearchScope {
    QString chatId = {}; // empty: all chats of the person
    Words words = Words::All;
    int limit = 50;
};

// Message records whose words begin with those of the query, the best match first,
// and of equal ones the newest. Records carry
// `chat_title` and `score`, the share of the query's words that the message has. No words: no results.
QJsonArray searchMessages(Database &database, qint64 userId, const QString &query, const SearchScope &scope);

} // namespace orvane::homeserver
