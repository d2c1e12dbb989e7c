// SPDX-License-Identifier: MIT
#pragma once

#include "Base/DescribedError.h"

namespace orvane {

/// What the pairwise engine refuses by itself.
class CryptoError : public DescribedError {
public:
    enum class Case { notInitialized, invalidKey, noSession, decryptionFailed };

    explicit CryptoError(Case which);
    Case which() const { return m_case; }

private:
    Case m_case;
};

/// What the zero-knowledge engine refuses by itself.
class ZkCryptoError : public DescribedError {
public:
    enum class Case { keychain, invalidJWK, invalidWrap, invalidPayload };

    /// `status` is the secret store's, with `keychain` alone.
    explicit ZkCryptoError(Case which, qint32 status = 0);
    Case which() const { return m_case; }
    qint32 status() const { return m_status; }

private:
    Case m_case;
    qint32 m_status;
};

/// A primitive failed: a forged or damaged box, a nonce of the wrong size, a key agreement without a result.
class CipherError : public DescribedError {
    using DescribedError::DescribedError;
};

} // namespace orvane
