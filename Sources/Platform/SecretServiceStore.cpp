#include "Platform/SecretServiceStore.h"

#include <QDeadlineTimer>
#include <QWaitCondition>

namespace orvane {

struct SecretServiceStore::Call {
    QWaitCondition answered;
    std::optional<Match> answer;
    bool givenUp = false;
};

SecretServiceStore::SecretServiceStore(int milliseconds)
    : m_patienceMs(milliseconds) {
    m_thread.setMaxThreadCount(1);
}

SecretServiceStore::~SecretServiceStore() {
    m_client.cancel();
    m_thread.waitForDone();
}

qint32 SecretServiceStore::add(const QString &service, const QString &account, const QString &label,
                               const QByteArray &data) {
    return perform([=, this] { return Match{m_client.add(service, account, label, data), {}}; }, {}).status;
}

SecretStore::Match SecretServiceStore::copyMatching(const QString &service, const QString &account) {
    {
        const QMutexLocker lock(&m_mutex);
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
    QMutexLocker lock(&m_mutex);
    if (m_isHanging)
        return {SecretStatus::unanswered, {}};
    const auto call = std::make_shared<Call>();
    m_thread.start([this, call, work = std::move(work), late = std::move(late)] {
        Match match = work();
        const QMutexLocker done(&m_mutex);
        if (call->givenUp) {
            m_isHanging = false;
            if (late)
                QMetaObject::invokeMethod(
                    this, [late, match] { late(match); }, Qt::QueuedConnection);
            return;
        }
        call->answer = std::move(match);
        call->answered.wakeAll();
    });
    const QDeadlineTimer deadline(m_patienceMs);
    while (!call->answer && call->answered.wait(&m_mutex, deadline)) {
    }
    if (!call->answer)
        call->givenUp = m_isHanging = true;
    return call->answer.value_or(Match{SecretStatus::unanswered, {}});
}

void SecretServiceStore::tellOfLate(const Late &late) {
    if (late.match.status != SecretStatus::success && late.match.status != SecretStatus::itemNotFound)
        return;
    const auto keep = [this](std::optional<Late> answer) {
        const QMutexLocker lock(&m_mutex);
        m_late = std::move(answer);
    };
    keep(late);
    Q_EMIT opened();
    keep(std::nullopt);
}

} // namespace orvane
