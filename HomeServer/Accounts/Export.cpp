// SPDX-License-Identifier: MIT
#include "HomeServer/Accounts/Export.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/MessageStore.h"
#include "HomeServer/Store/Query.h"

#include <array>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

struct Table {
    QLatin1StringView key;
    QStringList columns;
    QLatin1StringView rest; // of the SELECT; its one parameter is the user
};

QJsonArray rowsOf(Database &database, const Table &table, qint64 userId) {
    QJsonArray result;
    Query rows(database, u"SELECT %1 %2"_s.arg(table.columns.join(u','), table.rest), {userId});
    while (rows.next()) {
        QJsonObject row;
        for (int i = 0; i < table.columns.size(); ++i)
            row[table.columns[i]] = rows.json(i);
        result.append(row);
    }
    return result;
}

} // namespace

QJsonObject exportOf(Database &database, qint64 userId) {
    const std::array tables = {
        Table{"user"_L1,
              {u"id"_s, u"username"_s, u"display_name"_s, u"created_at"_s},
              "FROM users WHERE id = ?"_L1},
        Table{"devices"_L1,
              {u"id"_s, u"name"_s, u"platform"_s, u"created_at"_s, u"seen_at"_s},
              "FROM devices WHERE user_id = ?"_L1},
        Table{"contacts"_L1, {u"contact_id"_s}, "FROM contacts WHERE user_id = ?"_L1},
        Table{"address_book"_L1,
              {u"phone_hash"_s, u"display_name"_s, u"organization"_s},
              "FROM address_book WHERE user_id = ?"_L1},
        Table{"folders"_L1, {u"id"_s, u"name"_s, u"icon"_s}, "FROM folders WHERE user_id = ?"_L1},
        Table{"stars"_L1, {u"message_id"_s, u"created_at"_s}, "FROM stars WHERE user_id = ?"_L1},
        Table{"reactions"_L1,
              {u"message_id"_s, u"emoji"_s, u"created_at"_s},
              "FROM reactions WHERE user_id = ?"_L1},
        Table{"bots"_L1,
              {u"user_id"_s, u"description"_s, u"webhook_url"_s, u"web_app_url"_s},
              "FROM bots WHERE owner_id = ?"_L1},
    };
    QJsonObject result{{"chats"_L1, chatRecords(database, userId)},
                       {"messages"_L1, messageRecords(database, userId, u"m.sender_id = ?"_s, {userId},
                                                      u"ORDER BY m.seq"_s)}};
    for (const Table &table : tables)
        result[table.key] = rowsOf(database, table, userId);
    result["user"_L1] = result["user"_L1].toArray().first();
    return result;
}

} // namespace orvane::homeserver
