// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QtGlobal>

namespace orvane::homeserver {

class Database;

// What the assistant says without any model behind it: plain rules over the person's own chats. It answers
// in the language of the question, Russian or English.
QString assistantAnswer(Database &database, qint64 askedBy, const QString &question);

} // namespace orvane::homeserver
