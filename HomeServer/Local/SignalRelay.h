// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Signals between two people that the server only passes on: calls and direct links.
void addSignals(Router &router);

} // namespace orvane::homeserver
