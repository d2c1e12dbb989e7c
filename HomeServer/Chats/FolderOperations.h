// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// A person's own folders of chats.
void addFolders(Router &router);

} // namespace orvane::homeserver
