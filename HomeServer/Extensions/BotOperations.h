// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Bots, which are accounts that nobody signs in to, and their mini apps.
void addBots(Router &router);

} // namespace orvane::homeserver
