// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

namespace orvane {

/// Results of the secret store. Other values are the platform's own and are passed on.
namespace SecretStatus {
inline constexpr qint32 success = 0;
inline constexpr qint32 itemNotFound = -25300;
/// There is no store.
inline constexpr qint32 notAvailable = -25291;
/// There is a store, but for now it is locked, or it does not answer.
inline constexpr qint32 unanswered = -25315;
/// The store's own file can't be read back.
inline constexpr qint32 damaged = -26275;
/// The store's own file can't be written.
inline constexpr qint32 notWritten = -61;
} // namespace SecretStatus

/// The platform's store of secrets: items of bytes, each under a service and an account. One thread at a
/// time. Calls take a few milliseconds as a rule, and about a second at most.
class SecretStore : public QObject {
    Q_OBJECT

public:
    struct Match {
        qint32 status = SecretStatus::itemNotFound;
        /// Only with `SecretStatus::success`.
        QByteArray data;
    };

    /// `label` is for a human who looks at the store. An item under the same service and account is replaced.
    virtual qint32 add(const QString &service, const QString &account, const QString &label,
                       const QByteArray &data) = 0;
    virtual Match copyMatching(const QString &service, const QString &account) = 0;
    virtual qint32 remove(const QString &service, const QString &account) = 0;

    /// The person agrees that a file of theirs takes what the keyring can't.
    virtual void allowFile() {}

Q_SIGNALS:
    /// A read that was answered with `unanswered` has found its answer after all: it is worth another try. On
    /// the thread that made the store.
    void opened();
};

} // namespace orvane
