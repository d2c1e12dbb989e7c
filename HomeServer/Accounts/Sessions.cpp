// SPDX-License-Identifier: MIT
#include "HomeServer/Accounts/Sessions.h"

#include "HomeServer/Events/EventHub.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Security/Tokens.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

std::optional<Caller> callerOf(Services &services, const QByteArray &token) {
    if (token.isEmpty())
        return std::nullopt;
    Query row(services.database, u"SELECT user_id, device_id FROM tokens WHERE hash = ?"_s,
              {tokenHash(token)});
    if (!row.next())
        return std::nullopt;
    return Caller{row.integer(0), row.text(1)};
}

Device deviceOf(const QJsonObject &body) {
    Device device{fields::textOrEmpty(body, "device_id"_L1, 128), fields::textOrEmpty(body, "device_name"_L1),
                  fields::textOrEmpty(body, "platform"_L1, 64)};
    if (device.id.isEmpty())
        device.id = newId();
    return device;
}

void rememberDevice(Work &work, qint64 userId, const Device &device) {
    const double now = work.services.now();
    execute(
        work.database(),
        u"INSERT INTO devices(user_id, id, name, platform, created_at, seen_at) VALUES (?, ?, ?, ?, ?, ?) "
        "ON CONFLICT DO UPDATE SET name = excluded.name, platform = excluded.platform, seen_at = excluded.seen_at"_s,
        {userId, device.id, device.name, device.platform, now, now});
    QStringList surplus;
    Query others(
        work.database(),
        u"SELECT id FROM devices WHERE user_id = ? AND id <> ? ORDER BY seen_at DESC LIMIT -1 OFFSET ?"_s,
        {userId, device.id, maxDevices - 1});
    while (others.next())
        surplus.append(others.text(0));
    for (const QString &id : surplus)
        revokeDevice(work, userId, id);
}

QByteArray issueToken(Work &work, qint64 userId, const QString &deviceId) {
    QByteArray token = newToken();
    if (execute(work.database(), u"DELETE FROM tokens WHERE user_id = ? AND device_id = ?"_s,
                {userId, deviceId}) > 0)
        work.afterwards([&hub = work.services.events, userId, deviceId] { hub.close(userId, deviceId); });
    execute(work.database(),
            u"INSERT INTO tokens(hash, user_id, device_id, created_at) VALUES (?, ?, ?, ?)"_s,
            {tokenHash(token), userId, deviceId, work.services.now()});
    return token;
}

bool revokeDevice(Work &work, qint64 userId, const QString &deviceId) {
    if (execute(work.database(), u"DELETE FROM devices WHERE user_id = ? AND id = ?"_s, {userId, deviceId}) ==
        0)
        return false;
    execute(work.database(), u"DELETE FROM presence WHERE user_id = ? AND device_id = ?"_s,
            {userId, deviceId});
    work.afterwards([&hub = work.services.events, userId, deviceId] { hub.close(userId, deviceId); });
    return true;
}

} // namespace orvane::homeserver
