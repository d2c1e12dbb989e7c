// SPDX-License-Identifier: MIT
#include "HomeServer/Security/Sealed.h"

#include "HomeServer/Security/Passwords.h"
#include "HomeServer/Security/Tokens.h"

#include <openssl/evp.h>

#include <memory>
#include <stdexcept>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr int keyBytes = 32;
constexpr int nonceBytes = 12;
constexpr int tagBytes = 16;

const unsigned char *bytesOf(const QByteArray &array) {
    return reinterpret_cast<const unsigned char *>(array.constData());
}

QString base64(const QByteArray &bytes) {
    return QString::fromLatin1(bytes.toBase64());
}

} // namespace

QJsonObject seal(const QByteArray &bytes, const QString &password) {
    const QByteArray salt = randomBytes(16);
    const QByteArray nonce = randomBytes(nonceBytes);
    const QByteArray key = derivePasswordKey(password, salt, keyBytes);
    QByteArray sealed(bytes.size(), '\0');
    QByteArray tag(tagBytes, '\0');
    int length = 0;
    int rest = 0;
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                                  EVP_CIPHER_CTX_free);
    auto *out = reinterpret_cast<unsigned char *>(sealed.data());
    const bool done =
        key.size() == keyBytes && context &&
        EVP_EncryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, bytesOf(key), bytesOf(nonce)) == 1 &&
        EVP_EncryptUpdate(context.get(), out, &length, bytesOf(bytes), static_cast<int>(bytes.size())) == 1 &&
        EVP_EncryptFinal_ex(context.get(), out + length, &rest) == 1 &&
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, tagBytes, tag.data()) == 1;
    if (!done)
        throw std::runtime_error("a backup could not be encrypted");
    return {{"kdf"_L1, "scrypt"_L1},     {"n"_L1, passwordCost.n},          {"r"_L1, passwordCost.r},
            {"p"_L1, passwordCost.p},    {"salt"_L1, base64(salt)},         {"cipher"_L1, "aes-256-gcm"_L1},
            {"nonce"_L1, base64(nonce)}, {"ciphertext"_L1, base64(sealed)}, {"tag"_L1, base64(tag)}};
}

} // namespace orvane::homeserver
