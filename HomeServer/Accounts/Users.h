// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Operations/Call.h"
#include "HomeServer/Security/Names.h"

#include <optional>

namespace orvane::homeserver {

class Query;

struct NewUser {
    QString username;
    QString displayName;
    QString passwordHash = {}; // empty: nobody can sign in
    bool bot = false;
};

// Makes the account alone. Refuses a name that is taken, or looks like one of a person's, with 409.
qint64 createUser(Work &work, const NewUser &user);

std::optional<qint64> userNamed(Database &database, const QString &username);
bool userExists(Database &database, qint64 userId);
QString displayName(Database &database, qint64 userId);

// The columns that personRecord() reads, of `users u`.
constexpr auto personColumns = "u.id, u.username, u.display_name, u.is_bot";

// The current row as others see that person: id (text), username, display_name, is_bot, status.
QJsonObject personRecord(const Query &row, const EventHub &events);

} // namespace orvane::homeserver
