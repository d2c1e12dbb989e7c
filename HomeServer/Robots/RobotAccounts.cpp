// SPDX-License-Identifier: MIT
#include "HomeServer/Robots/RobotAccounts.h"

#include "HomeServer/Accounts/Users.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

void addRobots(Router &router) {
    router.announce("assistant-contact");
}

void createBuiltIns(Work &work) {
    Database &database = work.database();
    if (!userNamed(database, QString::fromLatin1(echoName))) {
        const qint64 echo = createUser(
            work, {.username = QString::fromLatin1(echoName), .displayName = u"Echo"_s, .bot = true});
        execute(database,
                u"INSERT INTO bots(user_id, owner_id, description, webhook_url, web_app_url, is_public) "
                "VALUES (?, NULL, ?, 'builtin://echo', '', 1)"_s,
                {echo, u"Says what you say"_s});
    }
    if (!userNamed(database, QString::fromLatin1(assistantName)))
        createUser(
            work,
            {.username = QString::fromLatin1(assistantName), .displayName = u"Orvane AI"_s, .bot = true});
    execute(database,
            u"INSERT OR IGNORE INTO chats(id, type, title, created_at) VALUES (?, 'group', 'Lobby', ?)"_s,
            {QString::fromLatin1(lobbyId), work.services.now()});
}

QList<qint64> builtInRobots(Database &database) {
    return {userNamed(database, QString::fromLatin1(echoName)).value_or(0),
            userNamed(database, QString::fromLatin1(assistantName)).value_or(0)};
}

} // namespace orvane::homeserver
