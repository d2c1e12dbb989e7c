// SPDX-License-Identifier: MIT
#pragma once

#include <QHostAddress>
#include <QNetworkRequest>
#include <QUrl>

#include <functional>
#include <optional>

class QObject;

namespace orvane::homeserver {

// Whether an address is one of the open internet: not this machine, its links, private or reserved networks
// (RFC 6890), nor one that carries such an IPv4 address inside.
bool isPublic(const QHostAddress &address);

// Whom a server on a user's word may speak to.
enum class Reach { PublicOnly, Anywhere };

// Prepares a request to the server of a user's address, to its root: nothing of the user's path, query or
// name goes out. The name is resolved once, and the request connects to the very address that was checked,
// with the name in its Host field and in TLS. It follows no redirection. `then` gets nothing when there is no
// such address; it runs later, on this thread, unless `context` is gone by then.
void prepareOutward(const QUrl &url, Reach reach, QObject *context,
                    const std::function<void(const std::optional<QNetworkRequest> &)> &then);

} // namespace orvane::homeserver
