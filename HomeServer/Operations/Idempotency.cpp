// SPDX-License-Identifier: MIT
#include "HomeServer/Operations/Idempotency.h"

#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestKey = 200;
constexpr double keptSeconds = 30.0 * 24 * 3600;

Answer once(Call &call, const Operation &operation) {
    const Request &request = call.request;
    if (request.idempotencyKey.size() > longestKey)
        refuseBadRequest();
    const QString key = QString::fromUtf8(request.idempotencyKey);
    const QString target = QString::fromLatin1(request.method) + u' ' + request.segments.join(u'/');

    Query kept(call.database(),
               u"SELECT target, status, answer FROM idempotency WHERE user_id = ? AND key = ?"_s,
               {call.caller.userId, key});
    if (kept.next()) {
        if (kept.text(0) != target)
            throw Refusal(409, "idempotency_key_reused");
        Answer answer(kept.bytes(2), "application/json");
        answer.status = static_cast<int>(kept.integer(1));
        return answer;
    }
    Answer answer = operation(call);
    execute(
        call.database(),
        u"INSERT INTO idempotency(user_id, key, target, status, answer, created_at) VALUES (?, ?, ?, ?, ?, ?)"_s,
        {call.caller.userId, key, target, answer.status, answer.body, call.services.now()});
    return answer;
}

} // namespace

Operation onceOnly(Operation operation) {
    return [operation = std::move(operation)](Call &call) {
        return call.caller.userId == 0 ? operation(call) : once(call, operation);
    };
}

void forgetOldKeys(Database &database, double now) {
    execute(database, u"DELETE FROM idempotency WHERE created_at < ?"_s, {now - keptSeconds});
}

} // namespace orvane::homeserver
