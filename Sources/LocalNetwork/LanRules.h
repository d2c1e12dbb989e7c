// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/NetworkInterfaces.h"

#include <QList>
#include <QString>

#include <optional>

/// Which address of this machine counts, and who dials whom. All functions are pure.
namespace orvane::lan {

/// A dotted address of 10/8, 172.16/12 or 192.168/16, told by its first two numbers of four. The others may
/// be any.
bool isPrivateLAN(const QString &ip);

/// The first private address on an interface whose name begins with "en".
std::optional<QString> localLANIP(const QList<InterfaceAddress> &addresses);

/// An IPv4 address of 10/8, 172.16/12 or 192.168/16 in its usual form, and nothing that only looks like one:
/// what goes over a link is in the clear.
bool mayBeDialled(const QString &host);

/// Of two peers exactly one dials: the one whose id sorts first, as a text.
bool dials(const QString &ownId, const QString &peerId);

} // namespace orvane::lan
