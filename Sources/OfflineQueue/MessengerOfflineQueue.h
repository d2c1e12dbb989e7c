// SPDX-License-Identifier: MIT
#pragma once

#include "OfflineQueue/QueueFile.h"
#include "Platform/PathMonitor.h"
#include "Server/MessengerAPI.h"

#include <QCoroTask>

#include <QObject>
#include <QThreadPool>

#include <memory>

namespace orvane {

/// The messages that could not go out, kept on the disk and sent when the network is back. It knows only
/// their final texts. Files, keys and ciphers are the business of an executor of its own, which does one
/// thing after another in the order in which it was asked. Main thread; destroyed, it finishes what it
/// writes.
///
///     a message: queued --drain--> sent, and gone
///                   ^          |-> failed, while it has attempts left
///                   +----------+   else dropped by the drain after the last
///
/// A drain handles the messages that are there when it begins, and what it leaves over is the queue when it
/// ends: a message that is queued meanwhile is lost. Log lines never tell of a message but that it is there.
class MessengerOfflineQueue : public QObject {
    Q_OBJECT

public:
    using QueuedMessage = orvane::QueuedMessage;

    /// Loads what is in `folder`, and drains with every update of a path that is satisfied. Store and
    /// interface outlive the queue; the store is only called by the executor.
    MessengerOfflineQueue(const QString &folder, SecretStore &store, MessengerAPI &api,
                          std::unique_ptr<PathMonitor> monitor);

    static MessengerOfflineQueue &shared();

    /// Adds the message and saves the queue, soon. One that can't be saved is kept in memory alone.
    void enqueue(const QueuedMessage &message);

    /// Sends the messages one after another, each once. Nothing while another drain runs, or for an empty
    /// queue. Never throws.
    QCoro::Task<void> drain();

private:
    /// Runs the work on the executor; its result comes to the thread that waits for it.
    template <typename Work>
    auto perform(Work work);

    QList<QueuedMessage> beginDrain();
    void endDrain(qsizetype sent, const QList<QueuedMessage> &remaining);

    MessengerAPI &m_api;
    std::unique_ptr<PathMonitor> m_monitor;

    // The executor's alone.
    QueueFile m_file;
    QList<QueuedMessage> pending;
    bool draining = false;

    /// Last: what it still does needs the rest.
    QThreadPool m_executor;
};

} // namespace orvane
