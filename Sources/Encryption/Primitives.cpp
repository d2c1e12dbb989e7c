// SPDX-License-Identifier: MIT
#include "Encryption/Primitives.h"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/rand.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace orvane::primitives {

namespace {

template <auto Free>
struct Freed {
    template <typename T>
    void operator()(T *object) const {
        Free(object);
    }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, Freed<EVP_CIPHER_CTX_free>>;
using MacContext = std::unique_ptr<EVP_MAC_CTX, Freed<EVP_MAC_CTX_free>>;
using KdfContext = std::unique_ptr<EVP_KDF_CTX, Freed<EVP_KDF_CTX_free>>;

// Looked up once: a look-up costs more than what is looked up.
EVP_CIPHER *aes256Gcm() {
    static auto *cipher = EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr);
    return cipher;
}

EVP_MD *sha256Digest() {
    static auto *digest = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return digest;
}

EVP_MAC *hmac() {
    static auto *mac = EVP_MAC_fetch(nullptr, "HMAC", nullptr);
    return mac;
}

EVP_KDF *hkdf() {
    static auto *kdf = EVP_KDF_fetch(nullptr, "HKDF", nullptr);
    return kdf;
}

void require(bool done) {
    if (!done)
        throw CipherError(u"The cipher failed."_s);
}

const uchar *bytesOf(QByteArrayView view) {
    // The library takes no null pointer for no bytes.
    static constexpr uchar none = 0;
    return view.isEmpty() ? &none : reinterpret_cast<const uchar *>(view.data());
}

uchar *bytesOf(QByteArray &bytes) {
    return reinterpret_cast<uchar *>(bytes.data());
}

OSSL_PARAM octets(const char *name, QByteArrayView view) {
    return OSSL_PARAM_construct_octet_string(name, const_cast<uchar *>(bytesOf(view)), size_t(view.size()));
}

OSSL_PARAM sha256Name() {
    static char name[] = "SHA256";
    return OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, name, 0);
}

void checkSizes(QByteArrayView key, QByteArrayView nonce) {
    require(key.size() == keySize);
    require(nonce.size() == nonceSize);
}

} // namespace

QByteArray randomBytes(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    require(RAND_bytes(bytesOf(bytes), int(size)) == 1);
    return bytes;
}

SecretBytes randomKey() {
    SecretBytes key(keySize);
    require(RAND_priv_bytes(key.data(), int(keySize)) == 1);
    return key;
}

QByteArray sha256(QByteArrayView data) {
    QByteArray digest(keySize, Qt::Uninitialized);
    require(EVP_Digest(bytesOf(data), size_t(data.size()), bytesOf(digest), nullptr, sha256Digest(),
                       nullptr) == 1);
    return digest;
}

SecretBytes hmacSha256(QByteArrayView key, std::initializer_list<QByteArrayView> data) {
    const MacContext context(EVP_MAC_CTX_new(hmac()));
    const OSSL_PARAM parameters[] = {sha256Name(), OSSL_PARAM_construct_end()};
    require(context && EVP_MAC_init(context.get(), bytesOf(key), size_t(key.size()), parameters) == 1);
    for (const QByteArrayView piece : data)
        require(EVP_MAC_update(context.get(), bytesOf(piece), size_t(piece.size())) == 1);
    SecretBytes code(keySize);
    size_t written = 0;
    require(EVP_MAC_final(context.get(), code.data(), &written, size_t(keySize)) == 1);
    return code;
}

SecretBytes hkdfSha256(QByteArrayView keyMaterial, QByteArrayView salt, QByteArrayView info,
                       qsizetype length) {
    const KdfContext context(EVP_KDF_CTX_new(hkdf()));
    const OSSL_PARAM parameters[] = {sha256Name(), octets(OSSL_KDF_PARAM_KEY, keyMaterial),
                                     octets(OSSL_KDF_PARAM_SALT, salt), octets(OSSL_KDF_PARAM_INFO, info),
                                     OSSL_PARAM_construct_end()};
    SecretBytes derived(length);
    require(context && EVP_KDF_derive(context.get(), derived.data(), size_t(length), parameters) == 1);
    return derived;
}

SecretBytes base64(const SecretBytes &key) {
    const qsizetype size = (key.size() + 2) / 3 * 4;
    SecretBytes terminated(size + 1);
    EVP_EncodeBlock(terminated.data(), key.data(), int(key.size()));
    return SecretBytes(terminated.view().first(size));
}

Box seal(QByteArrayView key, QByteArrayView nonce, QByteArrayView plain, QByteArrayView additional) {
    checkSizes(key, nonce);
    const CipherContext context(EVP_CIPHER_CTX_new());
    require(context &&
            EVP_EncryptInit_ex2(context.get(), aes256Gcm(), bytesOf(key), bytesOf(nonce), nullptr) == 1);
    int written = 0;
    if (!additional.isEmpty())
        require(EVP_EncryptUpdate(context.get(), nullptr, &written, bytesOf(additional),
                                  int(additional.size())) == 1);
    Box box{nonce.toByteArray(), QByteArray(plain.size(), Qt::Uninitialized),
            QByteArray(tagSize, Qt::Uninitialized)};
    require(EVP_EncryptUpdate(context.get(), bytesOf(box.ciphertext), &written, bytesOf(plain),
                              int(plain.size())) == 1);
    require(EVP_EncryptFinal_ex(context.get(), bytesOf(box.ciphertext) + written, &written) == 1);
    require(EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, int(tagSize), bytesOf(box.tag)) == 1);
    return box;
}

SecretBytes open(QByteArrayView key, const Box &box, QByteArrayView additional) {
    checkSizes(key, box.nonce);
    require(box.tag.size() == tagSize);
    const CipherContext context(EVP_CIPHER_CTX_new());
    require(context && EVP_DecryptInit_ex2(context.get(), aes256Gcm(), bytesOf(key),
                                           bytesOf(QByteArrayView(box.nonce)), nullptr) == 1);
    int written = 0;
    if (!additional.isEmpty())
        require(EVP_DecryptUpdate(context.get(), nullptr, &written, bytesOf(additional),
                                  int(additional.size())) == 1);
    SecretBytes plain(box.ciphertext.size());
    require(EVP_DecryptUpdate(context.get(), plain.data(), &written, bytesOf(QByteArrayView(box.ciphertext)),
                              int(box.ciphertext.size())) == 1);
    QByteArray tag = box.tag;
    require(EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, int(tagSize), bytesOf(tag)) == 1);
    require(EVP_DecryptFinal_ex(context.get(), plain.data() + written, &written) == 1);
    return plain;
}

} // namespace orvane::primitives
