// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace orvane {

/// A user id in text form as the integer that it stands for: an optional sign, then ASCII digits and nothing
/// else, within 64 bits; else absent.
std::optional<qint64> parseUserId(const QString &text);

} // namespace orvane
