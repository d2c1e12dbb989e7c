// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvane {

/// Writes one line to standard output, word for word, and flushes it. Any thread.
/// Never give it message texts, tokens, passwords or keys.
void logLine(const QString &line);

} // namespace orvane
