// SPDX-License-Identifier: MIT
#include "HomeServer/Operations/Idempotency.h"

#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestKey = 200;
constexpr double keptSeconds = 30.0 * 24 * 3600;

} // namespace

Answer onceOnly(Call &call, const std::function<QJsonObject()> &post,
                const std::function<QJsonObject(const QString &messageId)> &recordOf) {
    const Request &request = call.request;
    if (request.idempotencyKey.isEmpty())
        return Answer({{"message"_L1, post()}}, 201);
    if (request.idempotencyKey.size() > longestKey)
        refuseBadRequest();
    const QString key = QString::fromUtf8(request.idempotencyKey);
    const QString target = QString::fromLatin1(request.method) + u' ' + request.segments.join(u'/');

    Query known(call.database(), u"SELECT target, message_id FROM posted WHERE user_id = ? AND key = ?"_s,
                {call.caller.userId, key});
    if (known.next()) {
        if (known.text(0) != target)
            throw Refusal(409, "idempotency_key_reused");
        return Answer({{"message"_L1, recordOf(known.text(1))}}, 201);
    }
    const QJsonObject message = post();
    execute(call.database(),
            u"INSERT INTO posted(user_id, key, target, message_id, created_at) VALUES (?, ?, ?, ?, ?)"_s,
            {call.caller.userId, key, target, message["id"_L1].toString(), call.services.now()});
    return Answer({{"message"_L1, message}}, 201);
}

void forgetOldKeys(Database &database, double now) {
    execute(database, u"DELETE FROM posted WHERE created_at < ?"_s, {now - keptSeconds});
}

} // namespace orvane::homeserver
