// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

namespace orvane::homeserver {

class Database;

// The words of a text as they are looked up: runs of letters and digits, case-folded, without accents and
// repeats.
QStringList wordsOf(const QString &text);

// Enters a message's words; those that it was found by before are forgotten.
void indexWords(Database &database, qint64 seq, const QString &content);

} // namespace orvane::homeserver
