// SPDX-License-Identifier: MIT
#include "HomeServer/Accounts/Devices.h"

#include "HomeServer/Accounts/Sessions.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

Answer registerDevice(Call &call) {
    Device device = deviceOf(call.body);
    // A token speaks for the device it was issued to and for no other.
    device.id = call.caller.deviceId;
    rememberDevice(call, call.caller.userId, device);
    return Answer({{"status"_L1, "registered"_L1}, {"device"_L1, QJsonObject{{"id"_L1, device.id}}}});
}

Answer listDevices(Call &call) {
    QJsonArray devices;
    Query rows(call.database(),
               u"SELECT id, name, platform, seen_at FROM devices WHERE user_id = ? ORDER BY seen_at DESC"_s,
               {call.caller.userId});
    while (rows.next())
        devices.append(QJsonObject{{"id"_L1, rows.text(0)},
                                   {"device_name"_L1, rows.text(1)},
                                   {"platform"_L1, rows.text(2)},
                                   {"last_seen"_L1, rows.number(3)},
                                   {"current"_L1, rows.text(0) == call.caller.deviceId}});
    return Answer({{"devices"_L1, devices}});
}

Answer revoke(Call &call) {
    if (!revokeDevice(call, call.caller.userId, call.part("device")))
        refuseNotFound();
    return Answer({{"status"_L1, "revoked"_L1}});
}

Answer sync(Call &call) {
    qint64 since = 0;
    if (call.request.query.hasQueryItem(u"since"_s)) {
        bool decimal = false;
        since = call.queryText("since").toLongLong(&decimal);
        if (!decimal || since < 0)
            refuseBadRequest();
    }
    QJsonArray changed;
    Query rows(call.database(),
               u"SELECT DISTINCT m.chat_id FROM messages m JOIN members k ON k.chat_id = m.chat_id "
               "WHERE k.user_id = ? AND m.seq > ?"_s,
               {call.caller.userId, since});
    while (rows.next())
        changed.append(rows.text(0));
    return Answer(
        {{"cursor"_L1, syncCursor(call.database(), call.caller.userId)}, {"changed_chats"_L1, changed}});
}

Answer registerPush(Call &call) {
    execute(call.database(),
            u"INSERT INTO push_tokens(device_token, user_id, platform, created_at) VALUES (?, ?, ?, ?) "
            "ON CONFLICT DO UPDATE SET user_id = excluded.user_id, platform = excluded.platform"_s,
            {fields::text(call.body, "device_token"_L1, 4096), call.caller.userId,
             fields::text(call.body, "platform"_L1, 64), call.services.now()});
    return Answer({{"status"_L1, "registered"_L1}});
}

} // namespace

void addDevices(Router &router) {
    router.add("POST", "devices/register", registerDevice);
    router.add("GET", "devices", listDevices);
    router.add("DELETE", "devices/{device}", revoke);
    router.add("GET", "sync", sync);
    router.add("POST", "push/register", registerPush);
}

} // namespace orvane::homeserver
