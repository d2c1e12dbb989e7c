// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/SecretStore.h"

#include <QMap>

#include <memory>

namespace orvane {

/// What a store holds, kept apart from the store so that a "restart" can open it again.
struct StoredSecrets {
    QMap<QString, QByteArray> items;
    QMap<QString, QString> labels;
    /// Each call as "add account", "copy account" or "remove account".
    QStringList calls;
    /// The call with this number, counted from 0, fails with `failure`; -1 for none.
    qsizetype failingCall = -1;
    qint32 failure = -25308;
    /// What each call fails with; 0 for none.
    qint32 always = 0;
    bool mayUseFile = false;
};

/// A store in memory that can be told to fail at one of its calls.
class FaultySecretStore : public SecretStore {
public:
    explicit FaultySecretStore(std::shared_ptr<StoredSecrets> secrets)
        : m_secrets(std::move(secrets)) {}

    qint32 add(const QString &, const QString &account, const QString &label,
               const QByteArray &data) override {
        if (const qint32 status = failureOf("add ", account))
            return status;
        m_secrets->items.insert(account, data);
        m_secrets->labels.insert(account, label);
        return SecretStatus::success;
    }

    Match copyMatching(const QString &, const QString &account) override {
        if (const qint32 status = failureOf("copy ", account))
            return {status, {}};
        const auto found = m_secrets->items.constFind(account);
        return found == m_secrets->items.constEnd() ? Match{} : Match{SecretStatus::success, *found};
    }

    qint32 remove(const QString &, const QString &account) override {
        if (const qint32 status = failureOf("remove ", account))
            return status;
        return m_secrets->items.remove(account) ? SecretStatus::success : SecretStatus::itemNotFound;
    }

    void allowFile() override { m_secrets->mayUseFile = true; }

private:
    qint32 failureOf(const char *call, const QString &account) {
        m_secrets->calls.append(QLatin1StringView(call) + account);
        return m_secrets->calls.size() - 1 == m_secrets->failingCall ? m_secrets->failure : m_secrets->always;
    }

    std::shared_ptr<StoredSecrets> m_secrets;
};

} // namespace orvane
