// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Invitations into groups and channels.
void addInvites(Router &router);

} // namespace orvane::homeserver
