// SPDX-License-Identifier: MIT
#include "HomeServer/Federation/ServerName.h"

#include "HomeServer/Store/Query.h"

#include <QSysInfo>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

void fixServerName(Database &database) {
    const QString machine = QSysInfo::machineHostName().toLower();
    execute(database, u"INSERT OR IGNORE INTO server_facts(name, value) VALUES ('domain', ?)"_s,
            {machine.isEmpty() ? u"localhost"_s : machine});
}

QString serverName(Database &database) {
    Query row(database, u"SELECT value FROM server_facts WHERE name = 'domain'"_s);
    return row.next() ? row.text(0) : QString();
}

} // namespace orvane::homeserver
