// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvane {

using namespace Qt::StringLiterals;

/// Posted when a message came directly over the local network: `peer_id`, `chat_id` and `message`, the record
/// as it came.
inline const auto orvaneP2PMessage = u"orvaneP2PMessage"_s;

} // namespace orvane
