// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerMessage.h"

namespace orvane {

/// How a message stands among its neighbours.
struct MessagePlacement {
    /// No message of the same day stands before it.
    bool startsDay = true;
    /// A run is an unbroken row of messages of one sender, each within five minutes of the one before.
    bool startsRun = true;
    bool endsRun = true;

    bool operator==(const MessagePlacement &) const = default;

    static MessagePlacement of(const QList<MessengerMessage> &messages, int row);
};

} // namespace orvane
