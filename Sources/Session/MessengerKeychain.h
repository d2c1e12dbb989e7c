// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/SecretStore.h"
#include "Session/KeychainError.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

namespace orvane {

using namespace Qt::StringLiterals;

/// The signed-in user's token, name and id in the secret store, with a cache in memory. Every operation
/// throws KeychainError with the store's status. Main thread.
class MessengerKeychain {
public:
    explicit MessengerKeychain(std::unique_ptr<SecretStore> store);

    const QString service = u"com.orvanetalk.auth"_s;
    const QString tokenAccount = u"auth_token"_s;
    const QString usernameAccount = u"auth_username"_s;
    const QString userIdAccount = u"auth_user_id"_s;

    /// Absent for a token that was never saved or is no UTF-8.
    std::optional<QString> getToken();
    void saveToken(const QString &token);

    /// Absent for an id that was never saved or is no 64-bit decimal integer.
    std::optional<qint64> getUserId();
    std::optional<QString> getUsername() const;
    /// The caches change only when both items are saved.
    void saveUserInfo(const QString &username, qint64 userId);

    /// Stops at the first item that can't be deleted.
    void clear();

    /// For keys that have a service and an account of their own.
    SecretStore &store() const { return *m_store; }

private:
    /// Deletes, then adds: in between the item is absent.
    void save(const QByteArray &data, const QString &account, const QString &label);
    std::optional<QByteArray> load(const QString &account) const;
    /// UTF-8 text of an item; absent for bytes that are none.
    std::optional<QString> loadText(const QString &account) const;
    void remove(const QString &account);

    std::unique_ptr<SecretStore> m_store;
    std::optional<QString> cachedToken;
    std::optional<QString> cachedUsername;
    std::optional<qint64> cachedUserId;
};

} // namespace orvane
