// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Operations/Call.h"

namespace orvane::homeserver {

// The operation, done once for each user and idempotency key of the request: the answer is kept in the
// same transaction and given again, without acting, when the key comes again, after a restart too. A key
// that comes back with another target is refused with 409.
Operation onceOnly(Operation operation);

// Forgets the keys that are too old for any client to come back with.
void forgetOldKeys(Database &database, double now);

} // namespace orvane::homeserver
