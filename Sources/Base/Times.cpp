// SPDX-License-Identifier: MIT
#include "Base/Times.h"

#include <algorithm>
#include <cmath>

namespace orvane::times {

namespace {

constexpr double referenceOffset = 978307200.0;
// The first and the last second of the years 1 to 9999, which every date formatter copes with.
constexpr double earliest = -62135596800.0;
constexpr double latest = 253402300799.0;

} // namespace

QDateTime fromUnixSeconds(double seconds) {
    const double bounded = std::isnan(seconds) ? 0.0 : std::clamp(seconds, earliest, latest);
    return QDateTime::fromMSecsSinceEpoch(std::llround(bounded * 1000.0), Qt::UTC);
}

double toUnixSeconds(const QDateTime &time) {
    return double(time.toMSecsSinceEpoch()) / 1000.0;
}

QDateTime fromReferenceSeconds(double seconds) {
    return fromUnixSeconds(seconds + referenceOffset);
}

double toReferenceSeconds(const QDateTime &time) {
    return toUnixSeconds(time) - referenceOffset;
}

} // namespace orvane::times
