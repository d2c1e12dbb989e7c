// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// What can be done to a message that is there: edit, delete, pin, star, react; and the lists of starred
// messages and of mentions.
void addMessageActions(Router &router);

} // namespace orvane::homeserver
