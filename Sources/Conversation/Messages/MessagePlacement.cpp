// SPDX-License-Identifier: MIT
#include "Conversation/Messages/MessagePlacement.h"

#include <cstdlib>

namespace orvane {

namespace {

constexpr qint64 runGapSeconds = 300;

bool sameDay(const MessengerMessage &a, const MessengerMessage &b) {
    return a.timestamp.toLocalTime().date() == b.timestamp.toLocalTime().date();
}

bool sameRun(const MessengerMessage &a, const MessengerMessage &b) {
    return a.senderID == b.senderID && sameDay(a, b) &&
           std::abs(a.timestamp.secsTo(b.timestamp)) <= runGapSeconds;
}

} // namespace

MessagePlacement MessagePlacement::of(const QList<MessengerMessage> &messages, int row) {
    MessagePlacement placement;
    if (row < 0 || row >= messages.size())
        return placement;
    if (row > 0) {
        placement.startsDay = !sameDay(messages.at(row - 1), messages.at(row));
        placement.startsRun = !sameRun(messages.at(row - 1), messages.at(row));
    }
    if (row + 1 < messages.size())
        placement.endsRun = !sameRun(messages.at(row), messages.at(row + 1));
    return placement;
}

} // namespace orvane
