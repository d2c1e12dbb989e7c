// SPDX-License-Identifier: MIT
#include "Session/UserIdText.h"

#include <algorithm>

namespace orvane {

std::optional<qint64> parseUserId(const QString &text) {
    const bool hasSign = text.startsWith(u'+') || text.startsWith(u'-');
    const QStringView digits = QStringView(text).mid(hasSign ? 1 : 0);
    const bool onlyDigits =
        std::all_of(digits.begin(), digits.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
    if (digits.isEmpty() || !onlyDigits)
        return std::nullopt;
    bool fits = false;
    const qint64 value = text.toLongLong(&fits, 10);
    return fits ? std::optional(value) : std::nullopt;
}

} // namespace orvane
