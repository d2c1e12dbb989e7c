// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Listing and making chats.
void addChats(Router &router);

} // namespace orvane::homeserver
