// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>

/// The two number forms of a point in time. Both keep milliseconds; all functions are pure.
namespace orvane::times {

/// From the wire form: seconds since 1970-01-01 00:00:00 UTC, possibly fractional. Numbers outside the years
/// that a date can hold are clamped to them.
QDateTime fromUnixSeconds(double seconds);
double toUnixSeconds(const QDateTime &time);

/// The form of stored records: seconds since 2001-01-01 00:00:00 UTC.
QDateTime fromReferenceSeconds(double seconds);
double toReferenceSeconds(const QDateTime &time);

} // namespace orvane::times
