// SPDX-License-Identifier: MIT
#include "HomeServer/Security/LoginThrottle.h"

namespace orvane::homeserver {

namespace {

constexpr qsizetype allowedFailures = 5;
constexpr double windowSeconds = 60;
constexpr qsizetype sweepSize = 10'000;

void dropOld(QList<double> &times, double now) {
    times.removeIf([now](double time) { return time <= now - windowSeconds; });
}

} // namespace

bool LoginThrottle::isClosed(const QString &username, const QHostAddress &address, double now) {
    const auto entry = m_failures.find({username, address});
    if (entry == m_failures.end())
        return false;
    dropOld(*entry, now);
    return entry->size() >= allowedFailures;
}

void LoginThrottle::failed(const QString &username, const QHostAddress &address, double now) {
    if (m_failures.size() >= sweepSize)
        forgetOld(now);
    m_failures[{username, address}].append(now);
}

void LoginThrottle::succeeded(const QString &username, const QHostAddress &address) {
    m_failures.remove({username, address});
}

void LoginThrottle::forgetOld(double now) {
    m_failures.removeIf([now](auto entry) {
        dropOld(*entry, now);
        return entry->isEmpty();
    });
}

} // namespace orvane::homeserver
