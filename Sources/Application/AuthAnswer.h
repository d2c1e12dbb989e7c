// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvane {

/// The body of a successful sign-in, as far as the client reads it.
struct AuthAnswer {
    QString token;
    qint64 userId = 0;
    QString username;
    /// The username where the server names nobody.
    QString displayName;
    /// Empty when absent.
    QString deviceId;
    std::optional<qint64> syncCursor;
    std::optional<qint64> maxDevices;

    /// Absent for bytes that are no JSON, and when a required key is missing or of another type.
    static std::optional<AuthAnswer> parse(const QByteArray &body);
};

} // namespace orvane
