// SPDX-License-Identifier: MIT
#pragma once

#include "Encryption/EncryptionErrors.h"
#include "Encryption/SecretBytes.h"

#include <QByteArray>
#include <QByteArrayView>

/// The primitives of the end-to-end layer, over OpenSSL. All are pure but for the random ones, and may be
/// called from any thread. They throw CipherError.
namespace orvane::primitives {

inline constexpr qsizetype keySize = 32;
inline constexpr qsizetype nonceSize = 12;
inline constexpr qsizetype tagSize = 16;

/// From the system's secure generator.
QByteArray randomBytes(qsizetype size);
SecretBytes randomKey();

/// SHA-256 (FIPS 180-4): 32 bytes.
QByteArray sha256(QByteArrayView data);
/// HMAC-SHA-256 (RFC 2104) over the pieces of data one after another: 32 bytes.
SecretBytes hmacSha256(QByteArrayView key, std::initializer_list<QByteArrayView> data);
/// HKDF-SHA-256 (RFC 5869).
SecretBytes hkdfSha256(QByteArrayView keyMaterial, QByteArrayView salt, QByteArrayView info,
                       qsizetype length);

/// Standard base64 with padding (RFC 4648) of a key.
SecretBytes base64(const SecretBytes &key);

/// AES-256-GCM (SP 800-38D) with a nonce of 12 bytes and a tag of 16.
struct Box {
    QByteArray nonce;
    /// As long as the plain bytes.
    QByteArray ciphertext;
    QByteArray tag;
};
Box seal(QByteArrayView key, QByteArrayView nonce, QByteArrayView plain, QByteArrayView additional = {});
/// Throws for a box that this key did not seal with these additional data.
SecretBytes open(QByteArrayView key, const Box &box, QByteArrayView additional = {});

} // namespace orvane::primitives
