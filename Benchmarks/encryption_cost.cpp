// SPDX-License-Identifier: MIT
#include "Base/Json.h"
#include "Encryption/MessengerCrypto.h"
#include "Encryption/ZkForms.h"
#include "Ratio.h"

#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/rand.h>

#include <QJsonArray>

// The engines against the library's calls that they need, made as plainly as they can be.
using namespace orvane;
using namespace Qt::StringLiterals;

namespace {

constexpr int textSize = 200;
constexpr int members = 100;

struct NoStore : SecretStore {
    qint32 add(const QString &, const QString &, const QString &, const QByteArray &) override { return 0; }
    Match copyMatching(const QString &, const QString &) override { return {}; }
    qint32 remove(const QString &, const QString &) override { return 0; }
};

EVP_MD *sha256 = EVP_MD_fetch(nullptr, "SHA256", nullptr);
EVP_CIPHER *gcm = EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr);
EVP_MAC *hmac = EVP_MAC_fetch(nullptr, "HMAC", nullptr);
EVP_KDF *hkdf = EVP_KDF_fetch(nullptr, "HKDF", nullptr);
uchar zeros[32];

void bareHmac(const uchar *data, uchar *out) {
    EVP_MAC_CTX *context = EVP_MAC_CTX_new(hmac);
    char digest[] = "SHA256";
    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0),
                                     OSSL_PARAM_construct_end()};
    EVP_MAC_init(context, zeros, 32, parameters);
    EVP_MAC_update(context, data, 33);
    size_t size = 0;
    EVP_MAC_final(context, out, &size, 32);
    EVP_MAC_CTX_free(context);
}

void bareHkdf(const uchar *data, size_t size, uchar *out, size_t length) {
    EVP_KDF_CTX *context = EVP_KDF_CTX_new(hkdf);
    char digest[] = "SHA256";
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, const_cast<uchar *>(data), size),
        OSSL_PARAM_construct_end()};
    EVP_KDF_derive(context, out, length, parameters);
    EVP_KDF_CTX_free(context);
}

void bareSeal(const uchar *key, int size, uchar *sealed, uchar *tag) {
    uchar nonce[12];
    RAND_bytes(nonce, 12);
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    EVP_EncryptInit_ex2(context, gcm, key, nonce, nullptr);
    int written = 0;
    EVP_EncryptUpdate(context, nullptr, &written, zeros, 1);
    static uchar plain[8192];
    EVP_EncryptUpdate(context, sealed, &written, plain, size);
    EVP_EncryptFinal_ex(context, sealed + written, &written);
    EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_GCM_GET_TAG, 16, tag);
    EVP_CIPHER_CTX_free(context);
}

// Two chain keys and a box, and the ephemeral key's public bytes.
int bareEncrypt(EVP_PKEY *ephemeral) {
    uchar chain[33] = {};
    uchar keys[2][32];
    bareHmac(chain, keys[0]);
    bareHmac(chain, keys[1]);
    uchar sealed[textSize];
    uchar tag[16];
    bareSeal(keys[0], textSize, sealed, tag);
    size_t size = 32;
    EVP_PKEY_get_raw_public_key(ephemeral, chain, &size);
    return sealed[0] + tag[0];
}

// A root step with a fresh key, two chain keys, and a box that doesn't open.
int bareDecrypt() {
    EVP_PKEY *fresh = EVP_PKEY_Q_keygen(nullptr, nullptr, "X25519");
    EVP_PKEY_free(fresh);
    uchar derived[64];
    bareHkdf(zeros, 32, derived, 64);
    uchar chain[33] = {};
    uchar keys[2][32];
    bareHmac(chain, keys[0]);
    bareHmac(chain, keys[1]);
    EVP_CIPHER_CTX *context = EVP_CIPHER_CTX_new();
    EVP_DecryptInit_ex2(context, gcm, keys[0], zeros, nullptr);
    int written = 0;
    EVP_DecryptUpdate(context, nullptr, &written, zeros, 1);
    uchar sealed[textSize] = {};
    uchar plain[textSize];
    EVP_DecryptUpdate(context, plain, &written, sealed, textSize);
    EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_GCM_SET_TAG, 16, zeros);
    const int opened = EVP_DecryptFinal_ex(context, plain + written, &written);
    EVP_CIPHER_CTX_free(context);
    return opened;
}

// A fresh key, its agreement with the member's point, a derived key and a box.
int bareWrap(const uchar *point) {
    char group[] = "P-256";
    const OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, group, 0),
        OSSL_PARAM_construct_octet_string(OSSL_PKEY_PARAM_PUB_KEY, const_cast<uchar *>(point), 65),
        OSSL_PARAM_construct_end()};
    EVP_PKEY_CTX *reading = EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr);
    EVP_PKEY *peer = nullptr;
    EVP_PKEY_fromdata_init(reading);
    EVP_PKEY_fromdata(reading, &peer, EVP_PKEY_PUBLIC_KEY, const_cast<OSSL_PARAM *>(parameters));
    EVP_PKEY_CTX_free(reading);
    EVP_PKEY *ephemeral = EVP_EC_gen("P-256");
    EVP_PKEY_CTX *context = EVP_PKEY_CTX_new_from_pkey(nullptr, ephemeral, nullptr);
    EVP_PKEY_derive_init(context);
    EVP_PKEY_derive_set_peer_ex(context, peer, 0);
    uchar secret[32];
    size_t size = 32;
    EVP_PKEY_derive(context, secret, &size);
    EVP_PKEY_CTX_free(context);
    uchar own[65];
    EVP_PKEY_get_octet_string_param(ephemeral, OSSL_PKEY_PARAM_PUB_KEY, own, 65, &size);
    EVP_PKEY_free(ephemeral);
    EVP_PKEY_free(peer);
    uchar key[32];
    bareHkdf(secret, 32, key, 32);
    uchar sealed[32];
    uchar tag[16];
    bareSeal(key, 32, sealed, tag);
    return sealed[0] + tag[0] + own[64];
}

} // namespace

int main() {
    NoStore store;
    MessengerCrypto crypto(store, true);
    const QByteArray peerKey = X25519PrivateKey::generate().publicKey();
    crypto.establishSession(u"3"_s, peerKey, peerKey, true);
    const QString text(textSize, u'x');
    EVP_PKEY *ephemeral = EVP_PKEY_Q_keygen(nullptr, nullptr, "X25519");
    benchmarks::ratio(
        "encrypt, 200 bytes", 4001, [&] { return crypto.encrypt(u"3"_s, text).tag.size(); },
        [&] { return bareEncrypt(ephemeral); });
    const EncryptedMessage message = crypto.encrypt(u"3"_s, text);
    benchmarks::ratio(
        "decrypt, 200 bytes", 4001,
        [&]() -> int {
            try {
                return int(crypto.decrypt(u"3"_s, message).size());
            } catch (const CipherError &) {
                return 0;
            }
        },
        [] { return bareDecrypt(); });
    EVP_PKEY_free(ephemeral);

    const P256PublicKey target = P256PrivateKey::generate().publicKey();
    const QByteArray point = target.x963();
    const auto *pointBytes = reinterpret_cast<const uchar *>(point.constData());
    const QJsonObject jwk = zk::exportPublicJWK(target);
    const SecretBytes senderKey = primitives::randomKey();
    benchmarks::ratio(
        "wrapSenderKey, the local part", 501,
        [&] { return zk::wrap(senderKey, zk::importPublicJWK(jwk)).size(); },
        [&] { return bareWrap(pointBytes); });

    QJsonArray ids;
    for (int member = 0; member < members; ++member)
        ids.append(QJsonObject{{u"id"_s, member}});
    const QString meta = QString::fromUtf8(json::compact({{u"title"_s, u"G"_s}, {u"members"_s, ids}}));
    benchmarks::ratio(
        "createZkGroup of 100, the local part", 11,
        [&] {
            QJsonObject wrapped;
            for (int member = 0; member < members; ++member)
                wrapped.insert(QString::number(member), zk::wrap(senderKey, zk::importPublicJWK(jwk)));
            return zk::encrypt(meta, senderKey).size() + wrapped.size();
        },
        [&] {
            int sum = 0;
            for (int member = 0; member < members; ++member)
                sum += bareWrap(pointBytes);
            uchar sealed[8192];
            uchar tag[16];
            bareSeal(zeros, int(meta.size()), sealed, tag);
            return sum + sealed[0];
        });
    return 0;
}
