// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Reading and posting messages, and read receipts.
void addMessages(Router &router);

} // namespace orvane::homeserver
