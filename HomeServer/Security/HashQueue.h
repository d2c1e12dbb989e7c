// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Http/Message.h"

#include <QtConcurrentRun>
#include <QThreadPool>

#include <atomic>

namespace orvane::homeserver {

// Where passwords are hashed: two at once, and no more waiting than are done within a few seconds.
class HashQueue {
public:
    HashQueue() { m_threads.setMaxThreadCount(2); }

    // Runs `work`, which touches nothing of the server, on another thread. Refuses with 503 when too many
    // wait.
    template <typename Work>
    auto run(Work work) {
        if (m_waiting >= most)
            throw Refusal(503, "busy");
        ++m_waiting;
        return QtConcurrent::run(&m_threads, [this, work = std::move(work)] {
            auto result = work();
            --m_waiting;
            return result;
        });
    }

    void waitForDone() { m_threads.waitForDone(); }

private:
    static constexpr int most = 64;

    QThreadPool m_threads;
    std::atomic<int> m_waiting = 0;
};

} // namespace orvane::homeserver
