// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Public keys that people leave here for each other. The server never sees a private one.
void addKeys(Router &router);

} // namespace orvane::homeserver
