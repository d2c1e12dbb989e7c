// SPDX-License-Identifier: MIT
#include "Platform/SecretServiceStore.h"

#include <condition_variable>

namespace orvane {

struct SecretServiceStore::Call {
    std::condition_variable answered;
    std::optional<Match> answer;
    bool givenUp = false;
};

SecretServiceStore::SecretServiceStore(std::chrono::milliseconds patience)
    : m_patience(patience) {}

SecretServiceStore::~SecretServiceStore() {
    m_client.cancel();
    if (m_thread.joinable())
        m_thread.join();
}

qint32 SecretServiceStore::add(const QString &service, const QString &account, const QString &label,
                               const QByteArray &data) {
    return perform([=, this] { return Match{m_client.add(service, account, label, data), {}}; }, {}).status;
}

SecretStore::Match SecretServiceStore::copyMatching(const QString &service, const QString &account) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_late && m_late->service == service && m_late->account == account)
            return m_late->match;
    }
    return perform([=, this] { return m_client.copyMatching(service, account); },
                   [=, this](const Match &match) {
                       tellOfLate({service, account, match});
                   });
}

qint32 SecretServiceStore::remove(const QString &service, const QString &account) {
    return perform([=, this] { return Match{m_client.remove(service, account), {}}; }, {}).status;
}

SecretStore::Match SecretServiceStore::perform(std::function<Match()> work,
                                               std::function<void(const Match &)> late) {
    std::unique_lock lock(m_mutex);
    if (m_isHanging)
        return {SecretStatus::unanswered, {}};
    const auto call = std::make_shared<Call>();
    // A call that was given up has come to its end by now.
    if (m_thread.joinable())
        m_thread.join();
    m_thread = std::thread([this, call, work = std::move(work), late = std::move(late)] {
        Match match = work();
        const std::lock_guard done(m_mutex);
        if (call->givenUp) {
            m_isHanging = false;
            if (late)
                QMetaObject::invokeMethod(
                    this, [late, match] { late(match); }, Qt::QueuedConnection);
            return;
        }
        call->answer = std::move(match);
        call->answered.notify_all();
    });
    if (!call->answered.wait_for(lock, m_patience, [&] { return call->answer.has_value(); })) {
        call->givenUp = m_isHanging = true;
        return {SecretStatus::unanswered, {}};
    }
    lock.unlock();
    m_thread.join();
    return call->answer.value_or(Match{SecretStatus::unanswered, {}});
}

void SecretServiceStore::tellOfLate(const Late &late) {
    if (late.match.status != SecretStatus::success && late.match.status != SecretStatus::itemNotFound)
        return;
    const auto keep = [this](std::optional<Late> answer) {
        const std::lock_guard lock(m_mutex);
        m_late = std::move(answer);
    };
    keep(late);
    Q_EMIT opened();
    keep(std::nullopt);
}

} // namespace orvane
