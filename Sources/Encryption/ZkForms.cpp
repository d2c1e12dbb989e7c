// SPDX-License-Identifier: MIT
#include "Encryption/ZkForms.h"

#include "Base/Json.h"
#include "Encryption/Base64Url.h"

#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace orvane::zk {

namespace {

constexpr qsizetype coordinateSize = 32;

std::optional<QByteArray> bytesUnder(const QJsonObject &object, QStringView key) {
    const auto text = json::text(object, key);
    return text ? fromBase64Url(*text) : std::nullopt;
}

QJsonObject toJson(const primitives::Box &box) {
    return {{u"ciphertext"_s, toBase64Url(box.ciphertext + box.tag)}, {u"nonce"_s, toBase64Url(box.nonce)}};
}

std::optional<primitives::Box> boxIn(const QJsonObject &object) {
    const auto sealed = bytesUnder(object, u"ciphertext");
    const auto nonce = bytesUnder(object, u"nonce");
    if (!sealed || !nonce || sealed->size() < primitives::tagSize)
        return std::nullopt;
    return primitives::Box{*nonce, sealed->chopped(primitives::tagSize), sealed->right(primitives::tagSize)};
}

SecretBytes wrappingKey(const SecretBytes &secret) {
    return primitives::hkdfSha256(secret.view(), {}, {}, primitives::keySize);
}

} // namespace

QJsonObject exportPublicJWK(const P256PublicKey &key) {
    const QByteArray point = key.x963();
    return {{u"kty"_s, u"EC"_s},
            {u"crv"_s, u"P-256"_s},
            {u"x"_s, toBase64Url(point.mid(1, coordinateSize))},
            {u"y"_s, toBase64Url(point.mid(1 + coordinateSize))},
            {u"ext"_s, true}};
}

P256PublicKey importPublicJWK(const QJsonObject &jwk) {
    const auto x = bytesUnder(jwk, u"x");
    const auto y = bytesUnder(jwk, u"y");
    if (!x || !y)
        throw ZkCryptoError(ZkCryptoError::Case::invalidJWK);
    auto key = P256PublicKey::fromX963('\x04' + *x + *y);
    if (!key)
        throw CipherError(u"The key is no point of the curve."_s);
    return std::move(*key);
}

QJsonObject encrypt(const QString &plaintext, const SecretBytes &key) {
    return toJson(
        primitives::seal(key.view(), primitives::randomBytes(primitives::nonceSize), plaintext.toUtf8()));
}

QString decrypt(const QJsonObject &payload, const SecretBytes &key) {
    const auto box = boxIn(payload);
    if (!box)
        throw ZkCryptoError(ZkCryptoError::Case::invalidPayload);
    const SecretBytes plain = primitives::open(key.view(), *box);
    QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder(plain.view());
    if (decoder.hasError())
        throw ZkCryptoError(ZkCryptoError::Case::invalidPayload);
    return text;
}

QJsonObject wrap(const SecretBytes &senderKey, const P256PublicKey &target) {
    const P256PrivateKey ephemeral = P256PrivateKey::generate();
    const SecretBytes key = wrappingKey(ephemeral.agree(target));
    QJsonObject wrapped = toJson(
        primitives::seal(key.view(), primitives::randomBytes(primitives::nonceSize), senderKey.view()));
    wrapped.insert(u"ephemeral_public_jwk"_s, exportPublicJWK(ephemeral.publicKey()));
    return wrapped;
}

SecretBytes unwrap(const QJsonObject &wrapped, const P256PrivateKey &own) {
    const auto jwk = json::object(wrapped, u"ephemeral_public_jwk");
    const auto box = boxIn(wrapped);
    if (!jwk || !box)
        throw ZkCryptoError(ZkCryptoError::Case::invalidWrap);
    const SecretBytes key = wrappingKey(own.agree(importPublicJWK(*jwk)));
    return primitives::open(key.view(), *box);
}

} // namespace orvane::zk
