// SPDX-License-Identifier: MIT
#include "HomeServer/People/ContactOperations.h"

#include "HomeServer/Accounts/Users.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestSearch = 256;

QJsonArray people(Call &call, const QString &condition, const QVariantList &values) {
    QJsonArray result;
    Query rows(call.database(),
               u"SELECT %1 FROM users u WHERE %2"_s.arg(QLatin1StringView(personColumns), condition), values);
    while (rows.next())
        result.append(personRecord(rows, call.services.events));
    return result;
}

Answer listContacts(Call &call) {
    return Answer(
        {{"contacts"_L1, people(call,
                                u"u.id <> ?1 AND (u.id IN (SELECT k.user_id FROM members k "
                                "JOIN members mine ON mine.chat_id = k.chat_id WHERE mine.user_id = ?1) "
                                "OR u.id IN (SELECT contact_id FROM contacts WHERE user_id = ?1)) "
                                "ORDER BY u.display_key, u.id"_s,
                                {call.caller.userId})}});
}

// Finds by the exact id first, since that is how clients ask who somebody is.
Answer searchUsers(Call &call) {
    const QString wanted = call.queryText("q").trimmed();
    if (wanted.isEmpty() || wanted.size() > longestSearch)
        refuseBadRequest();
    QString pattern = nameKey(wanted);
    pattern.replace(u'\\', u"\\\\"_s).replace(u'%', u"\\%"_s).replace(u'_', u"\\_"_s);
    pattern = u'%' + pattern + u'%';
    return Answer({{"users"_L1, people(call,
                                       u"u.id <> ?1 AND (u.id = ?2 OR u.username_key LIKE ?3 ESCAPE '\\' "
                                       "OR u.display_key LIKE ?3 ESCAPE '\\') "
                                       "ORDER BY u.id <> ?2, length(u.username_key), u.id LIMIT 20"_s,
                                       {call.caller.userId, wanted.toLongLong(), pattern})}});
}

} // namespace

void addContacts(Router &router) {
    router.add("GET", "contacts", listContacts);
    router.add("GET", "users/search", searchUsers);
}

} // namespace orvane::homeserver
