// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvane {

/// Puts a text in the place of whatever was copied last. Main thread.
void setPasteboardText(const QString &text);

} // namespace orvane
