// SPDX-License-Identifier: MIT
#pragma once

#include "Encryption/Primitives.h"

#include <openssl/types.h>

#include <memory>
#include <optional>

namespace orvane {

struct FreeKey {
    void operator()(EVP_PKEY *key) const;
};
using KeyHandle = std::unique_ptr<EVP_PKEY, FreeKey>;

/// A private key for X25519 (RFC 7748); public keys are their 32 raw bytes. The library wipes the key when it
/// is dropped. Any thread.
class X25519PrivateKey {
public:
    static X25519PrivateKey generate();
    /// Absent unless there are 32 bytes.
    static std::optional<X25519PrivateKey> fromRaw(QByteArrayView bytes);
    static bool isPublicKey(QByteArrayView bytes) { return bytes.size() == primitives::keySize; }

    SecretBytes raw() const;
    QByteArray publicKey() const;
    /// 32 bytes; throws CipherError when `peer` is no public key or one that gives a secret of zeros.
    SecretBytes agree(QByteArrayView peer) const;

private:
    explicit X25519PrivateKey(KeyHandle key);
    KeyHandle m_key;
};

/// A point of the curve P-256 (SEC 1, FIPS 186-4) as a public key. Any thread.
class P256PublicKey {
public:
    /// From the uncompressed form, 65 bytes beginning with 4 (ANSI X9.63); absent for anything else and for a
    /// point that isn't on the curve.
    static std::optional<P256PublicKey> fromX963(QByteArrayView bytes);
    QByteArray x963() const { return m_x963; }

private:
    friend class P256PrivateKey;
    P256PublicKey(KeyHandle key, QByteArray x963);
    KeyHandle m_key;
    QByteArray m_x963;
};

/// A private key for agreement on P-256. Any thread.
class P256PrivateKey {
public:
    static P256PrivateKey generate();
    /// From the scalar in 32 bytes; absent for another size, zero, and the group's order and above.
    static std::optional<P256PrivateKey> fromRaw(QByteArrayView bytes);

    SecretBytes raw() const;
    P256PublicKey publicKey() const;
    /// The 32 bytes of the shared point's x; throws CipherError.
    SecretBytes agree(const P256PublicKey &peer) const;

private:
    explicit P256PrivateKey(KeyHandle key);
    KeyHandle m_key;
};

} // namespace orvane
