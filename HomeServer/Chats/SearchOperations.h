// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Searching messages by their words.
void addSearch(Router &router);

} // namespace orvane::homeserver
