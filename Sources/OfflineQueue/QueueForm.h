// SPDX-License-Identifier: MIT
#pragma once

#include "Base/DescribedError.h"
#include "Encryption/Primitives.h"
#include "OfflineQueue/QueuedMessage.h"

#include <QByteArray>
#include <QList>

namespace orvane {

class OfflineQueueStorageError : public DescribedError {
public:
    /// The store's status; 0 for a key of another size.
    static OfflineQueueStorageError keychain(qint32 status);
    static OfflineQueueStorageError invalidCiphertext();

private:
    using DescribedError::DescribedError;
};

} // namespace orvane

/// The queue in bytes. The file is "OTQ1", then the nonce, ciphertext and tag of AES-256-GCM without
/// additional data; inside is a JSON list of messages with dates as seconds since 2001. All functions are
/// pure.
namespace orvane::queueform {

/// The last character is the version of the form.
inline constexpr QByteArrayView fileMagic = "OTQ1";

QByteArray encode(const QList<QueuedMessage> &messages);
/// Strict: a key that is missing or mistyped in one message fails the list. Throws JsonError.
QList<QueuedMessage> decode(const QByteArray &json);

/// The file's bytes, with a fresh nonce. Throws CipherError.
QByteArray seal(const QByteArray &json, const SecretBytes &key);
/// Throws OfflineQueueStorageError without the magic and something after it, CipherError where that is too
/// short for a box.
primitives::Box boxOf(const QByteArray &file);

} // namespace orvane::queueform
