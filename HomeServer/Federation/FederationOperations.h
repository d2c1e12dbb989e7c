// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// What this server is called among home servers, and which others it knows.
void addFederation(Router &router);

} // namespace orvane::homeserver
