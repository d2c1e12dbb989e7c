// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/SecretStore.h"

#include <QMutex>

#include <memory>

namespace orvane {

/// The keyring where there is one, else the file. The store that takes the first item is remembered in a
/// marker file and kept from then on: a keyring that appears later never hides what the file holds, and one
/// that is away for once is not replaced by an empty file. Reading chooses nothing.
///
/// Both are used, the keyring first, where the person allows the file (see `allowFile`), and where the first
/// item comes while the keyring is there but unanswered: nobody has to wait for a dialog to sign in, and the
/// keyring is not given up for good. Then the file takes what the keyring can't and gives what the keyring
/// does not have; removing is from both. Until the first item reading and removing are done so too.
///
/// Any thread.
class ChosenSecretStore : public SecretStore {
    Q_OBJECT

public:
    /// `folder` holds the marker; it is made when the first item is added.
    ChosenSecretStore(std::unique_ptr<SecretStore> keyring, std::unique_ptr<SecretStore> file,
                      const QString &folder);

    /// The Secret Service and a file in the data directory.
    static std::unique_ptr<SecretStore> forThisDesktop();

    qint32 add(const QString &service, const QString &account, const QString &label,
               const QByteArray &data) override;
    Match copyMatching(const QString &service, const QString &account) override;
    qint32 remove(const QString &service, const QString &account) override;
    void allowFile() override;

private:
    enum class Choice { none, keyring, file, both };

    void remember(Choice choice);

    /// One call at a time: a store writes its file as a whole.
    QMutex m_calls;
    std::unique_ptr<SecretStore> m_keyring;
    std::unique_ptr<SecretStore> m_file;
    QString m_marker;
    Choice m_choice = Choice::none;
};

} // namespace orvane
