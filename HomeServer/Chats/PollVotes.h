// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Votes, which come and go by event socket.
void addPollVotes(Router &router);

} // namespace orvane::homeserver
