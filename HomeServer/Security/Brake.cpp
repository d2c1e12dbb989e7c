// SPDX-License-Identifier: MIT
#include "HomeServer/Security/Brake.h"

namespace orvane::homeserver {

namespace {

constexpr qsizetype sweepSize = 10'000;

} // namespace

void Brake::dropOld(QList<double> &times, double now) const {
    times.removeIf([&](double time) { return time <= now - m_window; });
}

bool Brake::allows(const QString &key, double now) {
    if (m_times.size() >= sweepSize)
        m_times.removeIf([&](auto entry) {
            dropOld(*entry, now);
            return entry->isEmpty();
        });
    QList<double> &times = m_times[key];
    dropOld(times, now);
    if (times.size() >= m_most)
        return false;
    times.append(now);
    return true;
}

} // namespace orvane::homeserver
