// SPDX-License-Identifier: MIT
#include "HomeServer/Accounts/AccountOperations.h"

#include "HomeServer/Accounts/Export.h"
#include "HomeServer/Events/EventHub.h"
#include "HomeServer/Files/LostFiles.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Security/HashQueue.h"
#include "HomeServer/Security/LoginThrottle.h"
#include "HomeServer/Security/Passwords.h"
#include "HomeServer/Security/Sealed.h"
#include "HomeServer/Store/Commits.h"
#include "HomeServer/Store/Query.h"

#include <QJsonDocument>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype shortestBackupPassword = 6;
constexpr qsizetype longestPassword = 1024;

Answer exportData(Call &call) {
    return Answer(exportOf(call.database(), call.caller.userId));
}

QFuture<Operation> backup(Call &call) {
    const QString password = fields::text(call.body, "password"_L1, longestPassword);
    if (password.size() < shortestBackupPassword)
        refuseBadRequest();
    const QByteArray data =
        QJsonDocument(exportOf(call.database(), call.caller.userId)).toJson(QJsonDocument::Compact);
    return call.services.hashing.run([data, password] { return seal(data, password); })
        .then([](const QJsonObject &sealed) -> Operation {
            return [sealed](Call &later) {
                QJsonObject answer = sealed;
                answer["version"_L1] = 1;
                answer["created_at"_L1] = later.services.now();
                return Answer(answer);
            };
        });
}

Answer finishDeletion(Call &call, bool verified) {
    if (!verified)
        throw Refusal(403, "invalid_credentials");
    const qint64 self = call.caller.userId;
    execute(call.database(),
            u"DELETE FROM sign_in_failures WHERE name_key = (SELECT username_key FROM users WHERE id = ?)"_s,
            {self});
    // A direct chat that outlives one of the two needs a name, since nobody is left to give it theirs.
    execute(call.database(),
            u"UPDATE chats SET title = 'Deleted account', direct_key = NULL WHERE type = 'direct' "
            "AND direct_key IS NOT NULL AND id IN (SELECT chat_id FROM members WHERE user_id = ?)"_s,
            {self});
    execute(call.database(), u"DELETE FROM users WHERE id IN (SELECT user_id FROM bots WHERE owner_id = ?)"_s,
            {self});
    execute(call.database(), u"DELETE FROM users WHERE id = ?"_s, {self});
    execute(call.database(),
            u"DELETE FROM chats WHERE id <> 'lobby' AND NOT EXISTS (SELECT 1 FROM members k JOIN users u "
            "ON u.id = k.user_id WHERE k.chat_id = chats.id AND u.is_bot = 0)"_s);
    dropLostFiles(call);
    dropStrayBytes(call);
    call.services.commits.scrubLog();
    call.afterwards([&hub = call.services.events, self] { hub.close(self); });
    return Answer({{"status"_L1, "deleted"_L1}});
}

QFuture<Operation> deleteAccount(Call &call) {
    const QString password = fields::text(call.body, "password"_L1, longestPassword);
    LoginThrottle &throttle = call.services.throttle;
    Query row(call.database(), u"SELECT username_key, password_hash FROM users WHERE id = ?"_s,
              {call.caller.userId});
    row.next();
    const QString key = row.text(0);
    if (throttle.isClosed(key, call.request.address, call.services.now()))
        throw Refusal(429, "too_many_attempts");
    throttle.failed(key, call.request.address, call.services.now());
    return call.services.hashing
        .run([password, hash = row.text(1)] { return verifyPassword(password, hash); })
        .then([](bool verified) -> Operation {
            return [verified](Call &later) { return finishDeletion(later, verified); };
        });
}

} // namespace

void addAccount(Router &router) {
    router.add("GET", "users/me/export", exportData);
    router.addSlow("POST", "users/me/backup", backup);
    router.addSlow("DELETE", "users/me", deleteAccount);
}

} // namespace orvane::homeserver
