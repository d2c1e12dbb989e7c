// SPDX-License-Identifier: MIT
#pragma once

#include "Encryption/AgreementKeys.h"

#include <QJsonObject>

/// The JSON forms of zero-knowledge groups. All functions are pure.
namespace orvane::zk {

/// A public key as a JSON Web Key (RFC 7517, RFC 7518): `kty`, `crv`, `x`, `y`, `ext`.
QJsonObject exportPublicJWK(const P256PublicKey &key);
/// Reads `x` and `y` alone. Throws ZkCryptoError `invalidJWK` without both in base64url, and CipherError when
/// they are no point of the curve.
P256PublicKey importPublicJWK(const QJsonObject &jwk);

/// A text or a title sealed with a group's key: `ciphertext`, with the tag at its end, and `nonce`, both in
/// base64url.
QJsonObject encrypt(const QString &plaintext, const SecretBytes &key);
/// Throws ZkCryptoError `invalidPayload` for another form and for a text that is no UTF-8, and CipherError
/// when it was sealed otherwise.
QString decrypt(const QJsonObject &payload, const SecretBytes &key);

/// A group's key for the owner of `target`: sealed under the agreement with a fresh key.
QJsonObject wrap(const SecretBytes &senderKey, const P256PublicKey &target);
/// Throws ZkCryptoError `invalidWrap` for another form, `invalidJWK`, or CipherError.
SecretBytes unwrap(const QJsonObject &wrapped, const P256PrivateKey &own);

} // namespace orvane::zk
