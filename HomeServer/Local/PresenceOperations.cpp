// SPDX-License-Identifier: MIT
#include "HomeServer/Local/PresenceOperations.h"

#include "HomeServer/Accounts/Users.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Events/EventHub.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr double presentSeconds = 120;

// Absent unless the text is a private IPv4 address in its usual form.
std::optional<QHostAddress> privateAddress(const QString &text) {
    QHostAddress address(text);
    if (address.protocol() != QAbstractSocket::IPv4Protocol || address.toString() != text)
        return std::nullopt;
    for (const auto &[network, bits] :
         {std::pair("10.0.0.0"_L1, 8), {"172.16.0.0"_L1, 12}, {"192.168.0.0"_L1, 16}})
        if (address.isInSubnet(QHostAddress(QString(network)), bits))
            return address;
    return std::nullopt;
}

QString subnetOf(const QHostAddress &address) {
    return QHostAddress(address.toIPv4Address() & 0xffffff00U).toString() + u"/24"_s;
}

Answer registerPresence(Call &call) {
    const auto address = privateAddress(fields::text(call.body, "local_ip"_L1));
    if (!address)
        refuseBadRequest();
    execute(call.database(),
            u"INSERT INTO presence(user_id, device_id, local_ip, subnet, seen_at) VALUES (?, ?, ?, ?, ?) "
            "ON CONFLICT DO UPDATE SET local_ip = excluded.local_ip, subnet = excluded.subnet, "
            "seen_at = excluded.seen_at"_s,
            {call.caller.userId, call.caller.deviceId, address->toString(), subnetOf(*address),
             call.services.now()});
    return Answer({{"status"_L1, "registered"_L1}, {"subnet"_L1, subnetOf(*address)}});
}

Answer unregisterPresence(Call &call) {
    execute(call.database(), u"DELETE FROM presence WHERE user_id = ? AND device_id = ?"_s,
            {call.caller.userId, call.caller.deviceId});
    return Answer({{"status"_L1, "unregistered"_L1}});
}

QString ownSubnet(Call &call) {
    Query row(call.database(),
              u"SELECT subnet FROM presence WHERE user_id = ? AND device_id = ? AND seen_at > ?"_s,
              {call.caller.userId, call.caller.deviceId, call.services.now() - presentSeconds});
    return row.next() ? row.text(0) : QString();
}

// Without a subnet all present acquaintances are told, wherever they are.
Answer discover(Call &call) {
    const QString subnet = call.queryText("subnet");
    const QList<qint64> known = acquaintances(call.database(), call.caller.userId);
    QJsonArray peers;
    Query rows(call.database(),
               u"SELECT user_id, local_ip, max(seen_at) FROM presence "
               "WHERE seen_at > ?1 AND (?2 = '' OR subnet = ?2) GROUP BY user_id ORDER BY user_id"_s,
               {call.services.now() - presentSeconds, subnet});
    while (rows.next())
        if (known.contains(rows.integer(0)))
            peers.append(QJsonObject{{"user_id"_L1, rows.text(0)},
                                     {"local_ip"_L1, rows.text(1)},
                                     {"display_name"_L1, displayName(call.database(), rows.integer(0))},
                                     {"online"_L1, call.services.events.isOnline(rows.integer(0))}});
    return Answer({{"peers"_L1, peers}, {"subnet"_L1, subnet.isEmpty() ? ownSubnet(call) : subnet}});
}

} // namespace

void addPresence(Router &router) {
    router.add("POST", "p2p/register", registerPresence);
    router.add("DELETE", "p2p/register", unregisterPresence);
    router.add("GET", "p2p/discover", discover);
}

} // namespace orvane::homeserver
