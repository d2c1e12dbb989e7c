// SPDX-License-Identifier: MIT
#pragma once

#include "Base/DescribedError.h"

#include <QCoroTask>
#include <QtDebug>

namespace orvane {

/// Starts a task that nobody waits for. Such a task handles the failures it expects itself; one that escapes
/// is a bug and is logged as such. Main thread.
inline void launch(QCoro::Task<void> task) {
    [](QCoro::Task<void> awaited) -> QCoro::Task<void> {
        try {
            co_await awaited;
        } catch (const std::exception &error) {
            qCritical("Bug: a task nobody waits for failed: %s", error.what());
        }
    }(std::move(task));
}

} // namespace orvane
