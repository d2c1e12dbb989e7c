// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Who can be reached directly on which local network.
void addPresence(Router &router);

} // namespace orvane::homeserver
