// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// What helps with a conversation: replies, summaries, memory, translation. Every answer says in `method`
// whether a model or plain rules made it.
void addAi(Router &router);

} // namespace orvane::homeserver
