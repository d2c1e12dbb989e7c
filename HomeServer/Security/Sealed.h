// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

namespace orvane::homeserver {

// Bytes encrypted with a key from a password (scrypt, AES-256-GCM), as a JSON object that says how: kdf, n,
// r, p, salt, cipher, nonce, ciphertext, tag; the bytes in base64. Takes long; thread-safe.
QJsonObject seal(const QByteArray &bytes, const QString &password);

} // namespace orvane::homeserver
