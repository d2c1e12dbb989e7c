#pragma once

#include "Platform/SecretStore.h"

namespace orvane {

/// The desktop's keyring (the freedesktop.org Secret Service), through libsecret. Items carry the attributes
/// `service` and `account`. Where nobody answers on the session bus, and for an item to add where the default
/// keyring is locked or missing, the status is `notAvailable`.
class SecretServiceStore : public SecretStore {
public:
    qint32 add(const QString &service, const QString &account, const QString &label,
               const QByteArray &data) override;
    Match copyMatching(const QString &service, const QString &account) override;
    qint32 remove(const QString &service, const QString &account) override;
};

} // namespace orvane
