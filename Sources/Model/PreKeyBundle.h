// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>

#include <optional>

namespace orvane {

/// What the server hands out of a user's public keys. Raw key bytes.
struct PreKeyBundle {
    QByteArray identityKey;
    QByteArray signedPreKey;
    QByteArray signedPreKeySignature;
    std::optional<QByteArray> oneTimePreKey;

    bool operator==(const PreKeyBundle &) const = default;

    /// Absent unless the first three keys are texts in standard base64 (RFC 4648, with padding). A bad
    /// one-time key is left out and the bundle stands.
    static std::optional<PreKeyBundle> from(const QJsonObject &json);
};

} // namespace orvane
