// SPDX-License-Identifier: MIT
#include "HomeServer/Accounts/Users.h"

#include "HomeServer/Events/EventHub.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

qint64 createUser(Work &work, const NewUser &user) {
    const QString key = nameKey(user.username);
    const QString skeleton = nameSkeleton(user.username);
    if (exists(work.database(),
               u"SELECT 1 FROM users WHERE username_key = ? OR (skeleton = ? AND is_bot = 0 AND NOT ?)"_s,
               {key, skeleton, user.bot}))
        throw Refusal(409, "username_taken");
    const QVariant hash = user.passwordHash.isEmpty() ? QVariant() : QVariant(user.passwordHash);
    const Query inserted(work.database(),
                         u"INSERT INTO users(username, username_key, display_name, display_key, "
                         u"password_hash, is_bot, created_at, skeleton) "
                         "VALUES (?, ?, ?, ?, ?, ?, ?, ?)"_s,
                         {user.username, key, user.displayName, nameKey(user.displayName), hash, user.bot,
                          work.services.now(), skeleton});
    return inserted.insertedId();
}

std::optional<qint64> userNamed(Database &database, const QString &username) {
    Query row(database, u"SELECT id FROM users WHERE username_key = ?"_s, {nameKey(username)});
    return row.next() ? std::optional(row.integer(0)) : std::nullopt;
}

bool userExists(Database &database, qint64 userId) {
    return exists(database, u"SELECT 1 FROM users WHERE id = ?"_s, {userId});
}

QString displayName(Database &database, qint64 userId) {
    Query row(database, u"SELECT display_name FROM users WHERE id = ?"_s, {userId});
    return row.next() ? row.text(0) : QString();
}

QJsonObject personRecord(const Query &row, const EventHub &events) {
    const bool bot = row.flag(3);
    return {{"id"_L1, row.text(0)},
            {"username"_L1, row.text(1)},
            {"display_name"_L1, row.text(2)},
            {"is_bot"_L1, bot},
            {"status"_L1, bot || events.isOnline(row.integer(0)) ? "online"_L1 : "offline"_L1}};
}

} // namespace orvane::homeserver
