// SPDX-License-Identifier: MIT
#include "HomeServer/Security/Tokens.h"

#include <openssl/rand.h>

#include <QCryptographicHash>
#include <QUuid>

#include <stdexcept>

namespace orvane::homeserver {

QByteArray randomBytes(int count) {
    QByteArray bytes(count, '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char *>(bytes.data()), count) != 1)
        throw std::runtime_error("no secure random bytes");
    return bytes;
}

QByteArray newToken() {
    return randomBytes(32).toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
}

QByteArray tokenHash(const QByteArray &token) {
    return QCryptographicHash::hash(token, QCryptographicHash::Sha256);
}

QString newId() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

} // namespace orvane::homeserver
