// SPDX-License-Identifier: MIT
#include "HomeServer/Security/Passwords.h"

#include "HomeServer/Security/Tokens.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <QStringList>

#include <stdexcept>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr int saltBytes = 16;
constexpr int hashBytes = 32;
constexpr quint64 memoryLimit = 64ULL * 1024 * 1024;

quint64 number(int value) {
    return static_cast<quint64>(value);
}

QByteArray derive(const QString &password, const QByteArray &salt, const PasswordCost &cost, int length) {
    const QByteArray secret = password.toUtf8();
    QByteArray key(length, '\0');
    const int done = EVP_PBE_scrypt(
        secret.constData(), static_cast<size_t>(secret.size()),
        reinterpret_cast<const unsigned char *>(salt.constData()), static_cast<size_t>(salt.size()),
        number(cost.n), number(cost.r), number(cost.p), memoryLimit,
        reinterpret_cast<unsigned char *>(key.data()), static_cast<size_t>(length));
    return done == 1 ? key : QByteArray();
}

} // namespace

QString hashPassword(const QString &password) {
    constexpr PasswordCost cost = passwordCost;
    const QByteArray salt = randomBytes(saltBytes);
    const QByteArray key = derive(password, salt, cost, hashBytes);
    if (key.isEmpty())
        throw std::runtime_error("the password could not be hashed");
    return u"scrypt$%1$%2$%3$%4$%5"_s.arg(cost.n).arg(cost.r).arg(cost.p).arg(
        QString::fromLatin1(salt.toBase64()), QString::fromLatin1(key.toBase64()));
}

bool verifyPassword(const QString &password, const QString &hash) {
    const QStringList parts = hash.split(u'$');
    if (parts.size() != 6 || parts.first() != "scrypt"_L1) {
        derive(password, QByteArray(saltBytes, '\0'), passwordCost, hashBytes);
        return false;
    }
    const PasswordCost cost{parts[1].toInt(), parts[2].toInt(), parts[3].toInt()};
    const QByteArray expected = QByteArray::fromBase64(parts[5].toLatin1());
    const QByteArray key = derive(password, QByteArray::fromBase64(parts[4].toLatin1()), cost, hashBytes);
    return key.size() == expected.size() && !key.isEmpty() &&
           CRYPTO_memcmp(key.constData(), expected.constData(), static_cast<size_t>(key.size())) == 0;
}

QByteArray derivePasswordKey(const QString &password, const QByteArray &salt, int length) {
    return derive(password, salt, passwordCost, length);
}

} // namespace orvane::homeserver
