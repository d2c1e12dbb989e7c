// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Json.h"
#include "Model/ChatListAnswer.h"
#include "Server/ApiError.h"

#include <QCoroTask>

#include <exception>
#include <optional>
#include <type_traits>

namespace orvane {

using namespace Qt::StringLiterals;

/// How a task ended: its value, or a short name for what it threw: "api 404", "transport", "json",
/// "decoding", "badResponse".
template <typename T>
struct Outcome {
    std::optional<T> value;
    QString failure;
};

inline QString nameOf(const std::exception &error) {
    if (const auto *api = dynamic_cast<const ApiError *>(&error))
        return u"%1 %2"_s.arg(api->domain(), QString::number(api->code()));
    if (dynamic_cast<const TransportError *>(&error))
        return u"transport"_s;
    if (dynamic_cast<const JsonError *>(&error))
        return u"json"_s;
    if (dynamic_cast<const DecodingError *>(&error))
        return u"decoding"_s;
    if (dynamic_cast<const MessengerAPIError *>(&error))
        return u"badResponse"_s;
    return QString::fromUtf8(error.what());
}

template <typename T, typename Value = std::conditional_t<std::is_void_v<T>, bool, T>>
QCoro::Task<Outcome<Value>> settle(QCoro::Task<T> task) {
    Outcome<Value> outcome;
    try {
        if constexpr (std::is_void_v<T>) {
            co_await task;
            outcome.value = true;
        } else {
            outcome.value.emplace(co_await task);
        }
    } catch (const std::exception &error) {
        outcome.failure = nameOf(error);
    }
    co_return outcome;
}

/// Runs the event loop until the task has ended.
template <typename T>
auto outcomeOf(QCoro::Task<T> task) {
    return QCoro::waitFor(settle(std::move(task)));
}

} // namespace orvane
