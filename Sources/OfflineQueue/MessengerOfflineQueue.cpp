// SPDX-License-Identifier: MIT
#include "OfflineQueue/MessengerOfflineQueue.h"

#include "Base/LogLine.h"
#include "Base/Task.h"
#include "Platform/Folders.h"
#include "Platform/RouteMonitor.h"
#include "Server/PostMessage.h"
#include "Session/UserIdText.h"

#include <QCoreApplication>
#include <QCoroFuture>
#include <QPointer>
#include <QSet>
#include <QtConcurrentRun>

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

QCoro::Task<bool> send(MessengerAPI &api, const QueuedMessage &item) {
    const QJsonObject body{{u"user_id"_s, parseUserId(item.userID).value_or(0)},
                           {u"content"_s, item.content},
                           {u"type"_s, item.type}};
    return dropped(postMessage(api, item.chatID, body, item.id), "whatever it was, the item is tried again");
}

} // namespace

// Nobody may wait for the result by blocking: that would run the work on the waiting thread.
template <typename Work>
auto MessengerOfflineQueue::perform(Work work) {
    return QtConcurrent::run(&m_executor, std::move(work));
}

MessengerOfflineQueue::MessengerOfflineQueue(const QString &folder, SecretStore &store, MessengerAPI &api,
                                             std::unique_ptr<PathMonitor> monitor)
    : m_api(api)
    , m_monitor(std::move(monitor))
    , m_file(folder, store) {
    m_executor.setMaxThreadCount(1);
    perform([this] { pending = m_file.loadFromDisk(); });
    connect(m_monitor.get(), &PathMonitor::pathUpdate, this, [this](PathMonitor::Status status) {
        if (status == PathMonitor::Status::satisfied)
            launch(drain());
    });
    m_monitor->start();
}

MessengerOfflineQueue &MessengerOfflineQueue::shared() {
    static auto *queue = [] {
        auto *made = new MessengerOfflineQueue(folders::data(), MessengerSession::shared().keychain.store(),
                                               MessengerAPI::shared(), std::make_unique<RouteMonitor>());
        // What is being written when the person quits is written to its end.
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, made,
                [made] { made->m_executor.waitForDone(); });
        return made;
    }();
    return *queue;
}

void MessengerOfflineQueue::enqueue(const QueuedMessage &message) {
    perform([this, message] {
        pending.append(message);
        m_file.saveToDisk(pending);
        logLine(u"[OfflineQueue] Queued %1 messages — will send when online"_s.arg(pending.size()));
    });
}

QCoro::Task<void> MessengerOfflineQueue::drain() {
    const QPointer<MessengerOfflineQueue> self(this);
    const auto begun = perform([this] { return beginDrain(); });
    const QList<QueuedMessage> snapshot = co_await begun;
    QSet<QString> sent;
    QList<QueuedMessage> remaining;
    for (QueuedMessage item : snapshot) {
        if (!self)
            co_return;
        if (item.retries >= item.maxRetries) {
            logLine(u"[OfflineQueue] Dropping item after retry limit"_s);
            continue;
        }
        const bool isSent = co_await send(m_api, item);
        if (isSent) {
            sent.insert(item.id);
            logLine(u"[OfflineQueue] Item sent"_s);
        } else {
            ++item.retries;
            remaining.append(item);
            logLine(u"[OfflineQueue] Item send failed; retry scheduled"_s);
        }
    }
    if (!self || snapshot.isEmpty())
        co_return;
    const auto ended = perform([this, count = sent.size(), remaining] { endDrain(count, remaining); });
    co_await ended;
}

QList<QueuedMessage> MessengerOfflineQueue::beginDrain() {
    if (draining || pending.isEmpty())
        return {};
    draining = true;
    logLine(u"[OfflineQueue] Draining %1 messages..."_s.arg(pending.size()));
    return pending;
}

void MessengerOfflineQueue::endDrain(qsizetype sent, const QList<QueuedMessage> &remaining) {
    pending = remaining;
    m_file.saveToDisk(pending);
    logLine(u"[OfflineQueue] Drain done: %1 sent, %2 remaining"_s.arg(sent).arg(remaining.size()));
    draining = false;
}

} // namespace orvane
