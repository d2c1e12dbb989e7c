// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvane::homeserver {

// A name as a short identifier: letters and digits in lower case, everything else one "_"; `otherwise` when
// nothing is left.
QString slugOf(const QString &name, const QString &otherwise);

} // namespace orvane::homeserver
