// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Devices, the sync cursor and push tokens.
void addDevices(Router &router);

} // namespace orvane::homeserver
