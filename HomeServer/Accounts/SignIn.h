// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// POST /api/auth/register and /api/auth/login.
void addSignIn(Router &router);

} // namespace orvane::homeserver
