// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvane::homeserver {

class Database;

// The part after the colon in the federated ids of this server's users. It is the machine's name at the
// first start and stays, whatever the machine is called later.
void fixServerName(Database &database);
QString serverName(Database &database);

} // namespace orvane::homeserver
