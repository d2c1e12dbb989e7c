#pragma once

#include <QByteArray>
#include <QString>

namespace orvane {

/// Results of the secret store. Other values are the platform's own and are passed on.
namespace SecretStatus {
inline constexpr qint32 success = 0;
inline constexpr qint32 itemNotFound = -25300;
/// No store answers.
inline constexpr qint32 notAvailable = -25291;
/// The store's own file can't be read back.
inline constexpr qint32 damaged = -26275;
/// The store's own file can't be written.
inline constexpr qint32 notWritten = -61;
} // namespace SecretStatus

/// The platform's store of secrets: items of bytes, each under a service and an account. One thread at a
/// time; calls may take a few milliseconds.
class SecretStore {
public:
    struct Match {
        qint32 status = SecretStatus::itemNotFound;
        /// Only with `SecretStatus::success`.
        QByteArray data;
    };

    virtual ~SecretStore() = default;

    /// `label` is for a human who looks at the store. An item under the same service and account is replaced.
    virtual qint32 add(const QString &service, const QString &account, const QString &label,
                       const QByteArray &data) = 0;
    virtual Match copyMatching(const QString &service, const QString &account) = 0;
    virtual qint32 remove(const QString &service, const QString &account) = 0;

protected:
    SecretStore() = default;
    SecretStore(const SecretStore &) = default;
    SecretStore &operator=(const SecretStore &) = default;
};

} // namespace orvane
