// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/ChatOperations.h"

#include "HomeServer/Accounts/Visitors.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Federation/ServerName.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Security/Tokens.h"
#include "HomeServer/Store/Query.h"

#include <algorithm>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

Answer listChats(Call &call) {
    return Answer({{"chats"_L1, chatRecords(call.database(), call.caller.userId)}});
}

QList<qint64> participants(Call &call, QLatin1StringView key) {
    return otherPeople(call.database(), fields::integers(call.body, key), call.caller.userId);
}

Answer created(Call &call, const QString &id) {
    call.services.visitors.note(call.request.address, call.caller.userId, id, call.services.now());
    return Answer({{"chat"_L1, chatRecord(call.database(), id, call.caller.userId)}}, 201);
}

Answer newChat(Call &call) {
    const QString type = fields::text(call.body, "type"_L1);
    const auto title = fields::optionalText(call.body, "title"_L1);
    const QList<qint64> others = participants(call, "participants"_L1);
    if (type == "direct"_L1) {
        if (others.size() != 1)
            refuseBadRequest();
        return created(call, directChat(call, call.caller.userId, others.first()));
    }
    if (type != "group"_L1)
        refuseBadRequest();
    return created(call, createChat(call, {.type = type, .title = title}, call.caller.userId, others));
}

Answer newChannel(Call &call) {
    const QString id = createChat(call, {.type = u"channel"_s, .title = fields::text(call.body, "title"_L1)},
                                  call.caller.userId, {});
    return Answer({{"channel"_L1, chatRecord(call.database(), id, call.caller.userId)}}, 201);
}

Answer listChannels(Call &call) {
    return Answer(
        {{"channels"_L1, chatRecords(call.database(), call.caller.userId, {.type = u"channel"_s})}});
}

Answer saved(Call &call) {
    const QString id = savedChat(call, call.caller.userId);
    return Answer({{"chat"_L1, chatRecord(call.database(), id, call.caller.userId)}});
}

bool isRemoteId(const QString &id) {
    return id.size() <= fields::shortText && id.startsWith(u'@') && id.indexOf(u':') > 1 &&
           !id.endsWith(u':');
}

Answer newFederatedChat(Call &call) {
    const QString title = fields::text(call.body, "title"_L1);
    const QList<qint64> others = participants(call, "local_participants"_L1);
    const QStringList remote = fields::texts(call.body, "remote_participants"_L1);
    if (remote.isEmpty() || !std::ranges::all_of(remote, isRemoteId))
        refuseBadRequest();
    const QString room = u"!%1:%2"_s.arg(newId(), serverName(call.database()));
    const QString id =
        createChat(call, {.type = u"group"_s, .title = title, .federated = true, .roomId = room},
                   call.caller.userId, others);
    for (const QString &person : remote)
        execute(call.database(),
                u"INSERT INTO remote_members(chat_id, remote_id) VALUES (?, ?) ON CONFLICT DO NOTHING"_s,
                {id, person});
    return created(call, id);
}

} // namespace

void addChats(Router &router) {
    router.add("GET", "chats", listChats);
    router.add("POST", "chats", newChat);
    router.add("POST", "chats/federated", newFederatedChat);
    router.add("POST", "channels", newChannel);
    router.add("GET", "channels", listChannels);
    router.add("GET", "saved", saved);
}

} // namespace orvane::homeserver
