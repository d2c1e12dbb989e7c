// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/SecretServiceClient.h"

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace orvane {

/// The desktop's keyring for callers that can't wait for it. Each call is done on a thread of its own and
/// given up after a while with `unanswered`; until it has come to its end, every further call is `unanswered`
/// at once. So whoever calls waits once for a service that hangs or a dialog that nobody answers.
///
/// A read that was given up and then finds or misses its item is told by `opened`; the answer itself is for
/// those alone who read the same item from there. What a late read says otherwise, and a late change, is
/// dropped.
class SecretServiceStore : public SecretStore {
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds usualPatience{1000};

    explicit SecretServiceStore(std::chrono::milliseconds patience = usualPatience);
    /// Ends what is still under way.
    ~SecretServiceStore() override;
    Q_DISABLE_COPY_MOVE(SecretServiceStore)

    qint32 add(const QString &service, const QString &account, const QString &label,
               const QByteArray &data) override;
    Match copyMatching(const QString &service, const QString &account) override;
    qint32 remove(const QString &service, const QString &account) override;

private:
    /// A call that may outlive whoever waited for it.
    struct Call;
    struct Late {
        QString service;
        QString account;
        Match match;
    };

    /// `late` is run on the store's thread with an answer that came after the waiting.
    Match perform(std::function<Match()> work, std::function<void(const Match &)> late);
    void tellOfLate(const Late &late);

    const std::chrono::milliseconds m_patience;
    SecretServiceClient m_client;
    std::mutex m_mutex;
    /// A call that was given up is still under way.
    bool m_isHanging = false;
    std::optional<Late> m_late;
    /// Of the call that is under way, or of one that was given up.
    std::thread m_thread;
};

} // namespace orvane
