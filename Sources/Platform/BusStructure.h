// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusArgument>

#include <tuple>

namespace orvane {

/// A record that goes over the bus as a structure of what its `static auto fields(auto &self)` ties, in that
/// order. It and lists of it are still to be made known to QtDBus by qDBusRegisterMetaType.
template <typename T>
concept BusStructure = requires(T &record) {
    T::fields(record);
};

template <BusStructure T>
QDBusArgument &operator<<(QDBusArgument &argument, const T &record) {
    argument.beginStructure();
    std::apply([&](const auto &...fields) { (argument << ... << fields); }, T::fields(record));
    argument.endStructure();
    return argument;
}

template <BusStructure T>
const QDBusArgument &operator>>(const QDBusArgument &argument, T &record) {
    argument.beginStructure();
    std::apply([&](auto &...fields) { (argument >> ... >> fields); }, T::fields(record));
    argument.endStructure();
    return argument; // NOLINT(bugprone-return-const-ref-from-parameter): as QtDBus calls it
}

} // namespace orvane
