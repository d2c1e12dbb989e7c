// SPDX-License-Identifier: MIT
#pragma once

namespace orvane::homeserver {

class Database;

// Brings a database of any earlier version, or an empty one, to the present one. Throws DatabaseFault.
void migrate(Database &database);

} // namespace orvane::homeserver
