#pragma once

#include "Platform/SecretStore.h"

#include <QMutex>

#include <memory>
#include <optional>

namespace orvane {

/// The keyring where one answers, else the file. The store that took the first item is remembered in a marker
/// file and kept from then on, so that a keyring that appears later never hides what the file holds, and a
/// keyring that is away for once is not replaced by an empty file. Any thread.
class ChosenSecretStore : public SecretStore {
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

private:
    enum class Choice { keyring, file };

    bool fallBack(qint32 status);
    void remember();
    SecretStore &current();

    /// One call at a time: a store writes its file as a whole.
    QMutex m_calls;
    std::unique_ptr<SecretStore> m_keyring;
    std::unique_ptr<SecretStore> m_file;
    QString m_marker;
    bool m_remembered = false;
    Choice m_choice = Choice::keyring;
};

} // namespace orvane
