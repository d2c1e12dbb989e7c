// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Operations/Call.h"

namespace orvane::homeserver {

// Posts a message once for each user and idempotency key of the request: which message the key made is kept
// in the same transaction. When the key comes again, after a restart too, nothing is done, and the answer is
// the message as it is now. A key that comes back with another target is refused with 409.
Answer onceOnly(Call &call, const std::function<QJsonObject()> &post,
                const std::function<QJsonObject(const QString &messageId)> &recordOf);

// Forgets the keys that are too old for any client to come back with.
void forgetOldKeys(Database &database, double now);

} // namespace orvane::homeserver
