// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/SecretStore.h"

#include <memory>

namespace orvane {

/// Calls to the desktop's keyring (the freedesktop.org Secret Service), through libsecret. Items carry the
/// attributes `service` and `account`. A call takes as long as the service takes, and a read of a locked item
/// as long as the dialog that it opens. One thread at a time.
///
/// Where nobody answers on the session bus, and for an item to add where there is no default keyring, the
/// status is `notAvailable`; for locked items and keyrings it is `unanswered`.
class SecretServiceClient {
public:
    SecretServiceClient();
    ~SecretServiceClient();
    Q_DISABLE_COPY_MOVE(SecretServiceClient)

    qint32 add(const QString &service, const QString &account, const QString &label, const QByteArray &data);
    /// Asks a service that keeps silent over and over.
    SecretStore::Match copyMatching(const QString &service, const QString &account);
    /// Opens no dialog.
    qint32 remove(const QString &service, const QString &account);

    /// Ends the call that is under way, and every later one at once. Any thread.
    void cancel();

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
};

} // namespace orvane
