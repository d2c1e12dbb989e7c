// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Router;

// Asking to be somebody's contact, and the address book.
void addContactRequests(Router &router);

} // namespace orvane::homeserver
