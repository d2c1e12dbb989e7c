// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// What a person may do with their account as a whole: export, backup, delete.
void addAccount(Router &router);

} // namespace orvane::homeserver
