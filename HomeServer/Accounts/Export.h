// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>

namespace orvane::homeserver {

class Database;

// Everything that is stored about a person, apart from secrets and from what others wrote.
QJsonObject exportOf(Database &database, qint64 userId);

} // namespace orvane::homeserver
