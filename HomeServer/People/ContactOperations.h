// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Whom a user knows and can find.
void addContacts(Router &router);

} // namespace orvane::homeserver
