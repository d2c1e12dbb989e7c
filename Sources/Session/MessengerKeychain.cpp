// SPDX-License-Identifier: MIT
#include "Session/MessengerKeychain.h"

#include "Session/UserIdText.h"

#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace orvane {

MessengerKeychain::MessengerKeychain(std::unique_ptr<SecretStore> store)
    : m_store(std::move(store)) {}

std::optional<QString> MessengerKeychain::getToken() {
    if (cachedToken)
        return cachedToken;
    cachedToken = loadText(tokenAccount);
    return cachedToken;
}

void MessengerKeychain::saveToken(const QString &token) {
    save(token.toUtf8(), tokenAccount, u"OrvaneTalk JWT token"_s);
    cachedToken = token;
}

std::optional<qint64> MessengerKeychain::getUserId() {
    if (cachedUserId)
        return cachedUserId;
    if (const auto text = loadText(userIdAccount))
        cachedUserId = parseUserId(*text);
    return cachedUserId;
}

std::optional<QString> MessengerKeychain::getUsername() const {
    return cachedUsername ? cachedUsername : loadText(usernameAccount);
}

void MessengerKeychain::saveUserInfo(const QString &username, qint64 userId) {
    save(username.toUtf8(), usernameAccount, u"OrvaneTalk username"_s);
    save(QByteArray::number(userId), userIdAccount, u"OrvaneTalk user ID"_s);
    cachedUsername = username;
    cachedUserId = userId;
}

void MessengerKeychain::clear() {
    remove(tokenAccount);
    cachedToken.reset();
    remove(usernameAccount);
    remove(userIdAccount);
    cachedUsername.reset();
    cachedUserId.reset();
}

void MessengerKeychain::save(const QByteArray &data, const QString &account, const QString &label) {
    m_store->remove(service, account);
    const qint32 status = m_store->add(service, account, label, data);
    if (status != SecretStatus::success)
        throw KeychainError(KeychainError::Kind::saveFailed, status);
}

std::optional<QByteArray> MessengerKeychain::load(const QString &account) const {
    const SecretStore::Match match = m_store->copyMatching(service, account);
    if (match.status == SecretStatus::itemNotFound)
        return std::nullopt;
    if (match.status != SecretStatus::success)
        throw KeychainError(KeychainError::Kind::loadFailed, match.status);
    return match.data;
}

std::optional<QString> MessengerKeychain::loadText(const QString &account) const {
    const auto data = load(account);
    if (!data)
        return std::nullopt;
    // Stateless: a character cut off at the end is an error too.
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decode(*data);
    return decode.hasError() ? std::nullopt : std::optional(text);
}

void MessengerKeychain::remove(const QString &account) {
    const qint32 status = m_store->remove(service, account);
    if (status != SecretStatus::success && status != SecretStatus::itemNotFound)
        throw KeychainError(KeychainError::Kind::deleteFailed, status);
}

} // namespace orvane
