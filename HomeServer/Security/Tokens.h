// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

namespace orvane::homeserver {

// `count` bytes of the system's secure generator. Throws std::runtime_error when there are none.
QByteArray randomBytes(int count);

// A fresh bearer token: 32 random bytes in base64url without padding.
QByteArray newToken();

// What is stored of a token: its SHA-256, 32 bytes.
QByteArray tokenHash(const QByteArray &token);

// A fresh identifier: UUID text in lower case, without braces.
QString newId();

} // namespace orvane::homeserver
