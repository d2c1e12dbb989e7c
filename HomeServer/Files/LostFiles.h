// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvane::homeserver {

class Database;
class Work;

// Which messages name which files.

// Notes the files that a message's content names, and forgets those that it named before.
void noteFiles(Database &database, const QString &messageId, const QString &content);

bool namesFiles(Database &database, const QString &messageId);

// Throws away the files that no message names any more, and those that none has named within an hour of their
// upload. The bytes go once the work is committed.
void dropLostFiles(Work &work);

// Throws away bytes that belong to no file of the database: a chat is gone, or the server ended before it
// could write them down.
void dropStrayBytes(Work &work);

} // namespace orvane::homeserver
