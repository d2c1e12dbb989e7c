// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace orvane::homeserver {

// The length in seconds that an MP4 recording says it has; 0 when it says nothing.
double voiceSeconds(const QByteArray &mp4);

} // namespace orvane::homeserver
