// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvane {

/// A sealed text of the pairwise engine.
struct EncryptedMessage {
    QByteArray ciphertext;
    QByteArray nonce;
    QByteArray tag;
    /// The sender's count before this message; absent in groups.
    std::optional<qint64> messageNumber;
    /// The sender's raw X25519 key; absent in groups.
    std::optional<QByteArray> ephemeralKey;

    bool operator==(const EncryptedMessage &) const = default;

    /// As it travels in a message's content: a JSON object with its bytes in base64, in base64 as a whole
    /// (RFC 4648, with padding). Pure.
    QString toContent() const;
    /// Absent for everything that is no such envelope. Keys it doesn't know are passed over. Pure.
    static std::optional<EncryptedMessage> fromContent(const QString &content);
};

} // namespace orvane
