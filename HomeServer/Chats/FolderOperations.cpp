// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/FolderOperations.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Security/Tokens.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

QJsonArray chatsIn(Database &database, const QString &folder) {
    QJsonArray chats;
    Query rows(database, u"SELECT chat_id FROM folder_chats WHERE folder_id = ? ORDER BY rowid"_s, {folder});
    while (rows.next())
        chats.append(rows.text(0));
    return chats;
}

QJsonArray folderRecords(Call &call, const QString &onlyThis = {}) {
    QJsonArray folders;
    Query rows(
        call.database(),
        u"SELECT id, name, icon FROM folders WHERE user_id = ?1 AND (?2 = '' OR id = ?2) ORDER BY rowid"_s,
        {call.caller.userId, onlyThis});
    while (rows.next())
        folders.append(QJsonObject{{"id"_L1, rows.text(0)},
                                   {"name"_L1, rows.text(1)},
                                   {"icon"_L1, rows.text(2)},
                                   {"chat_ids"_L1, chatsIn(call.database(), rows.text(0))}});
    return folders;
}

Answer listFolders(Call &call) {
    return Answer({{"folders"_L1, folderRecords(call)}});
}

Answer newFolder(Call &call) {
    const QString id = newId();
    execute(call.database(),
            u"INSERT INTO folders(id, user_id, name, icon, created_at) VALUES (?, ?, ?, ?, ?)"_s,
            {id, call.caller.userId, fields::text(call.body, "name"_L1),
             fields::textOrEmpty(call.body, "icon"_L1, 32), call.services.now()});
    return Answer({{"folder"_L1, folderRecords(call, id).first()}}, 201);
}

Answer changeFolder(Call &call) {
    const QString folder = call.part("folder");
    const QString chat = fields::text(call.body, "chat_id"_L1);
    const QString action = fields::text(call.body, "action"_L1);
    if (folderRecords(call, folder).isEmpty())
        refuseNotFound();
    requireMember(call.database(), chat, call.caller.userId);
    if (action == "add"_L1)
        execute(call.database(),
                u"INSERT INTO folder_chats(folder_id, chat_id) VALUES (?, ?) ON CONFLICT DO NOTHING"_s,
                {folder, chat});
    else if (action == "remove"_L1)
        execute(call.database(), u"DELETE FROM folder_chats WHERE folder_id = ? AND chat_id = ?"_s,
                {folder, chat});
    else
        refuseBadRequest();
    return Answer({{"folder"_L1, folderRecords(call, folder).first()}});
}

} // namespace

void addFolders(Router &router) {
    router.add("GET", "folders", listFolders);
    router.add("POST", "folders", newFolder);
    router.add("POST", "folders/{folder}/chats", changeFolder);
}

} // namespace orvane::homeserver
