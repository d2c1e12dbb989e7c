// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvane::homeserver {

// What deriving a key from a password costs: scrypt's parameters.
struct PasswordCost {
    int n = 1 << 15;
    int r = 8;
    int p = 1;
};
constexpr PasswordCost passwordCost;

// Memory-hard password hashes (scrypt) as one text: "scrypt$N$r$p$salt$hash", salt and hash in base64. Both
// calls take about a tenth of a second and 32 MiB, so they belong on a worker thread. Thread-safe.
QString hashPassword(const QString &password);

// False also for a text that is no such hash; that takes as long as a wrong password.
bool verifyPassword(const QString &password, const QString &hash);

// `length` bytes derived from a password with the same cost.
QByteArray derivePasswordKey(const QString &password, const QByteArray &salt, int length);

} // namespace orvane::homeserver
