// SPDX-License-Identifier: MIT
#include "HomeServer/People/ContactRequests.h"

#include "HomeServer/Accounts/Users.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/Events.h"
#include "HomeServer/Events/EventHub.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Store/Query.h"

#include <QRegularExpression>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

bool isPending(Database &database, qint64 from, qint64 to) {
    return exists(database, u"SELECT 1 FROM contact_requests WHERE from_id = ? AND to_id = ?"_s, {from, to});
}

bool areContacts(Database &database, qint64 one, qint64 other) {
    return exists(database, u"SELECT 1 FROM contacts WHERE user_id = ? AND contact_id = ?"_s, {one, other});
}

// Both get the direct chat and hear of each other, so that their clients have a reason to look.
Answer makeContacts(Call &call, qint64 one, qint64 other) {
    execute(
        call.database(),
        u"DELETE FROM contact_requests WHERE (from_id = ?1 AND to_id = ?2) OR (from_id = ?2 AND to_id = ?1)"_s,
        {one, other});
    execute(call.database(),
            u"INSERT INTO contacts(user_id, contact_id) VALUES (?1, ?2), (?2, ?1) ON CONFLICT DO NOTHING"_s,
            {one, other});
    directChat(call, one, other);
    const EventHub &hub = call.services.events;
    call.tell({one}, statusEvent(other, hub.isOnline(other)));
    call.tell({other}, statusEvent(one, hub.isOnline(one)));
    return Answer({{"status"_L1, "accepted"_L1}});
}

Answer request(Call &call) {
    const qint64 self = call.caller.userId;
    const qint64 other = fields::integer(call.body, "contact_id"_L1);
    if (other == self)
        refuseBadRequest();
    if (!userExists(call.database(), other))
        refuseNotFound();
    if (areContacts(call.database(), self, other))
        return Answer({{"status"_L1, "accepted"_L1}});
    if (isPending(call.database(), other, self))
        return makeContacts(call, self, other);
    execute(
        call.database(),
        u"INSERT INTO contact_requests(from_id, to_id, created_at) VALUES (?, ?, ?) ON CONFLICT DO NOTHING"_s,
        {self, other, call.services.now()});
    return Answer({{"status"_L1, "pending"_L1}});
}

Answer listRequests(Call &call) {
    QJsonArray requests;
    Query rows(call.database(),
               u"SELECT %1 FROM contact_requests r JOIN users u ON u.id = r.from_id "
               "WHERE r.to_id = ? ORDER BY r.rowid"_s.arg(QLatin1StringView(personColumns)),
               {call.caller.userId});
    while (rows.next())
        requests.append(personRecord(rows, call.services.events));
    return Answer({{"requests"_L1, requests}});
}

Answer decide(Call &call) {
    const qint64 self = call.caller.userId;
    const qint64 other = call.part("contact").toLongLong();
    const QString action = fields::text(call.body, "action"_L1);
    if (action != "accept"_L1 && action != "reject"_L1)
        refuseBadRequest();
    if (!isPending(call.database(), other, self))
        refuseNotFound();
    if (action == "accept"_L1)
        return makeContacts(call, self, other);
    execute(call.database(), u"DELETE FROM contact_requests WHERE from_id = ? AND to_id = ?"_s,
            {other, self});
    return Answer({{"status"_L1, "rejected"_L1}});
}

Answer addToAddressBook(Call &call) {
    static const QRegularExpression hash(u"^[0-9a-f]{64}$"_s);
    const QString phone = fields::text(call.body, "phone_hash"_L1);
    if (!hash.match(phone).hasMatch())
        refuseBadRequest();
    execute(call.database(),
            u"INSERT INTO address_book(user_id, phone_hash, display_name, from_address_book, organization, "
            "avatar_hash) VALUES (?, ?, ?, ?, ?, ?) ON CONFLICT DO UPDATE SET display_name = "
            "excluded.display_name, "
            "from_address_book = excluded.from_address_book, organization = excluded.organization, "
            "avatar_hash = excluded.avatar_hash"_s,
            {call.caller.userId, phone, fields::text(call.body, "display_name"_L1),
             fields::flag(call.body, "from_address_book"_L1, false),
             nullable(fields::optionalText(call.body, "organization"_L1)),
             nullable(fields::optionalText(call.body, "avatar_hash"_L1))});
    return Answer({{"status"_L1, "added"_L1}});
}

} // namespace

void addContactRequests(Router &router) {
    router.add("POST", "contacts/request", request);
    router.add("GET", "contacts/requests", listRequests);
    router.add("POST", "contacts/requests/{contact}", decide);
    router.add("POST", "contacts/add", addToAddressBook);
}

} // namespace orvane::homeserver
