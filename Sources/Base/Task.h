// SPDX-License-Identifier: MIT
#pragma once

#include <QCoroTask>
#include <QtDebug>

#include <concepts>
#include <exception>
#include <optional>
#include <type_traits>

namespace orvane {

/// Starts a task that nobody waits for. Such a task handles the failures it expects itself; one that escapes
/// is a bug and is logged as such. Main thread.
template <typename T>
void launch(QCoro::Task<T> task) {
    [](QCoro::Task<T> awaited) -> QCoro::Task<void> {
        try {
            co_await awaited;
        } catch (const std::exception &error) {
            qCritical("Bug: a task nobody waits for failed: %s", error.what());
        }
    }(std::move(task));
}

namespace detail {

template <typename T>
struct Perhaps {
    using Type = std::optional<T>;
};
template <typename T>
struct Perhaps<std::optional<T>> {
    using Type = std::optional<T>;
};
template <>
struct Perhaps<void> {
    using Type = bool;
};

} // namespace detail

/// What is left of a result of type T where failures are dropped: nothing may be there, be it that the result
/// itself was absent; for a `void`, whether it came to its end.
template <typename T>
using Perhaps = typename detail::Perhaps<T>::Type;

/// The task without its failures, which are dropped on purpose: `reason` says at the call why nobody needs
/// them. Nothing of them is logged or kept, as their words may tell what nobody else should read.
template <typename T>
QCoro::Task<Perhaps<T>> dropped(QCoro::Task<T> task, [[maybe_unused]] const char *reason) {
    try {
        if constexpr (std::is_void_v<T>) {
            co_await task;
            co_return true;
        } else {
            co_return co_await std::move(task);
        }
    } catch (const std::exception &) {
        co_return Perhaps<T>();
    }
}

/// The same for work that is done at once. Any thread.
template <std::invocable Work>
Perhaps<std::invoke_result_t<Work>> dropped(Work &&work, [[maybe_unused]] const char *reason) {
    using Result = std::invoke_result_t<Work>;
    try {
        if constexpr (std::is_void_v<Result>) {
            work();
            return true;
        } else {
            return work();
        }
    } catch (const std::exception &) {
        return Perhaps<Result>();
    }
}

} // namespace orvane
