// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/SecretStore.h"

#include <QJsonObject>

#include <optional>

namespace orvane {

/// Secrets in one file that only its owner can read (mode 0600), replaced atomically and synced to the disk.
/// For desktops without a keyring. A file that can't be read back is kept aside with the ending ".damaged"
/// when the next item is added.
class FileSecretStore : public SecretStore {
public:
    /// The folder of `path` is made when the first item is added.
    explicit FileSecretStore(const QString &path);

    qint32 add(const QString &service, const QString &account, const QString &label,
               const QByteArray &data) override;
    Match copyMatching(const QString &service, const QString &account) override;
    qint32 remove(const QString &service, const QString &account) override;

private:
    /// Empty for a file that does not exist, absent for one that can't be read.
    std::optional<QJsonObject> read() const;
    qint32 write(const QJsonObject &items) const;

    QString m_path;
};

} // namespace orvane
