// SPDX-License-Identifier: MIT
#include "Encryption/AgreementKeys.h"

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>

#include <array>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr qsizetype x963Size = 65;

void require(bool done) {
    if (!done)
        throw CipherError(u"The key agreement failed."_s);
}

const uchar *bytesOf(QByteArrayView view) {
    return reinterpret_cast<const uchar *>(view.data());
}

SecretBytes sharedSecret(EVP_PKEY *own, EVP_PKEY *peer) {
    const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(
        EVP_PKEY_CTX_new_from_pkey(nullptr, own, nullptr), &EVP_PKEY_CTX_free);
    require(context && EVP_PKEY_derive_init(context.get()) == 1);
    // Both sides' points were checked when they were read.
    require(EVP_PKEY_derive_set_peer_ex(context.get(), peer, 0) == 1);
    SecretBytes secret(primitives::keySize);
    size_t size = size_t(primitives::keySize);
    require(EVP_PKEY_derive(context.get(), secret.data(), &size) == 1);
    require(size == size_t(primitives::keySize));
    return secret;
}

using BigNumber = std::unique_ptr<BIGNUM, decltype(&BN_clear_free)>;

const EC_GROUP *p256() {
    static const auto *group = EC_GROUP_new_by_curve_name(NID_X9_62_prime256v1);
    return group;
}

KeyHandle p256Key(int selection, const BIGNUM *scalar, const uchar *point) {
    const std::unique_ptr<OSSL_PARAM_BLD, decltype(&OSSL_PARAM_BLD_free)> builder(OSSL_PARAM_BLD_new(),
                                                                                  &OSSL_PARAM_BLD_free);
    require(builder &&
            OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, "P-256", 0));
    require(OSSL_PARAM_BLD_push_octet_string(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, point,
                                             size_t(x963Size)) == 1);
    if (scalar)
        require(OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_PRIV_KEY, scalar) == 1);
    const std::unique_ptr<OSSL_PARAM, decltype(&OSSL_PARAM_free)> parameters(
        OSSL_PARAM_BLD_to_param(builder.get()), &OSSL_PARAM_free);
    const std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)> context(
        EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr), &EVP_PKEY_CTX_free);
    EVP_PKEY *key = nullptr;
    if (!context || EVP_PKEY_fromdata_init(context.get()) != 1 ||
        EVP_PKEY_fromdata(context.get(), &key, selection, parameters.get()) != 1)
        return {};
    return KeyHandle(key);
}

std::array<uchar, size_t(x963Size)> publicPoint(const BIGNUM *scalar) {
    const std::unique_ptr<EC_POINT, decltype(&EC_POINT_free)> point(EC_POINT_new(p256()), &EC_POINT_free);
    require(point && EC_POINT_mul(p256(), point.get(), scalar, nullptr, nullptr, nullptr) == 1);
    std::array<uchar, size_t(x963Size)> encoded{};
    require(EC_POINT_point2oct(p256(), point.get(), POINT_CONVERSION_UNCOMPRESSED, encoded.data(),
                               encoded.size(), nullptr) == encoded.size());
    return encoded;
}

} // namespace

void FreeKey::operator()(EVP_PKEY *key) const {
    EVP_PKEY_free(key);
}

X25519PrivateKey::X25519PrivateKey(KeyHandle key)
    : m_key(std::move(key)) {}

X25519PrivateKey X25519PrivateKey::generate() {
    KeyHandle key(EVP_PKEY_Q_keygen(nullptr, nullptr, "X25519"));
    require(key != nullptr);
    return X25519PrivateKey(std::move(key));
}

std::optional<X25519PrivateKey> X25519PrivateKey::fromRaw(QByteArrayView bytes) {
    if (bytes.size() != primitives::keySize)
        return std::nullopt;
    KeyHandle key(
        EVP_PKEY_new_raw_private_key_ex(nullptr, "X25519", nullptr, bytesOf(bytes), size_t(bytes.size())));
    require(key != nullptr);
    return X25519PrivateKey(std::move(key));
}

SecretBytes X25519PrivateKey::raw() const {
    SecretBytes bytes(primitives::keySize);
    size_t size = size_t(primitives::keySize);
    require(EVP_PKEY_get_raw_private_key(m_key.get(), bytes.data(), &size) == 1);
    return bytes;
}

QByteArray X25519PrivateKey::publicKey() const {
    QByteArray bytes(primitives::keySize, Qt::Uninitialized);
    size_t size = size_t(primitives::keySize);
    require(EVP_PKEY_get_raw_public_key(m_key.get(), reinterpret_cast<uchar *>(bytes.data()), &size) == 1);
    return bytes;
}

SecretBytes X25519PrivateKey::agree(QByteArrayView peer) const {
    require(isPublicKey(peer));
    const KeyHandle key(
        EVP_PKEY_new_raw_public_key_ex(nullptr, "X25519", nullptr, bytesOf(peer), size_t(peer.size())));
    require(key != nullptr);
    return sharedSecret(m_key.get(), key.get());
}

P256PublicKey::P256PublicKey(KeyHandle key, QByteArray x963)
    : m_key(std::move(key))
    , m_x963(std::move(x963)) {}

std::optional<P256PublicKey> P256PublicKey::fromX963(QByteArrayView bytes) {
    if (bytes.size() != x963Size || bytes.front() != '\x04')
        return std::nullopt;
    KeyHandle key = p256Key(EVP_PKEY_PUBLIC_KEY, nullptr, bytesOf(bytes));
    if (!key)
        return std::nullopt;
    return P256PublicKey(std::move(key), bytes.toByteArray());
}

P256PrivateKey::P256PrivateKey(KeyHandle key)
    : m_key(std::move(key)) {}

P256PrivateKey P256PrivateKey::generate() {
    KeyHandle key(EVP_EC_gen("P-256"));
    require(key != nullptr);
    return P256PrivateKey(std::move(key));
}

std::optional<P256PrivateKey> P256PrivateKey::fromRaw(QByteArrayView bytes) {
    if (bytes.size() != primitives::keySize)
        return std::nullopt;
    const BigNumber scalar(BN_secure_new(), &BN_clear_free);
    require(scalar && BN_bin2bn(bytesOf(bytes), int(bytes.size()), scalar.get()));
    if (BN_is_zero(scalar.get()) || BN_cmp(scalar.get(), EC_GROUP_get0_order(p256())) >= 0)
        return std::nullopt;
    KeyHandle key = p256Key(EVP_PKEY_KEYPAIR, scalar.get(), publicPoint(scalar.get()).data());
    require(key != nullptr);
    return P256PrivateKey(std::move(key));
}

SecretBytes P256PrivateKey::raw() const {
    BIGNUM *number = nullptr;
    require(EVP_PKEY_get_bn_param(m_key.get(), OSSL_PKEY_PARAM_PRIV_KEY, &number) == 1);
    const BigNumber scalar(number, &BN_clear_free);
    SecretBytes bytes(primitives::keySize);
    require(BN_bn2binpad(scalar.get(), bytes.data(), int(primitives::keySize)) == int(primitives::keySize));
    return bytes;
}

P256PublicKey P256PrivateKey::publicKey() const {
    QByteArray point(x963Size, Qt::Uninitialized);
    size_t size = 0;
    require(EVP_PKEY_get_octet_string_param(m_key.get(), OSSL_PKEY_PARAM_PUB_KEY,
                                            reinterpret_cast<uchar *>(point.data()), size_t(point.size()),
                                            &size) == 1);
    require(size == size_t(x963Size));
    EVP_PKEY_up_ref(m_key.get());
    return P256PublicKey(KeyHandle(m_key.get()), point);
}

SecretBytes P256PrivateKey::agree(const P256PublicKey &peer) const {
    return sharedSecret(m_key.get(), peer.m_key.get());
}

} // namespace orvane
