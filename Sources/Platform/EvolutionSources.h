// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace orvane {

/// The ids of the address books among Evolution Data Server's sources, sorted: those that are switched on, as
/// are the accounts that they belong to. The directories of organisations (LDAP) are no address books of a
/// person. `sources` has the key file of each source by its id. Pure.
QStringList evolutionAddressBooks(const QHash<QString, QString> &sources);

} // namespace orvane
