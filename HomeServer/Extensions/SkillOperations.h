// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// The skills that people publish, and the agents of a group.
void addSkills(Router &router);

} // namespace orvane::homeserver
