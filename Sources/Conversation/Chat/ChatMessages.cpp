// SPDX-License-Identifier: MIT
#include "Conversation/Chat/ChatMessages.h"

namespace orvane {

void ChatMessages::setDeliveryStatus(const QString &messageID, DeliveryStatus status) {
    change(messageID, [status](MessengerMessage &message) { message.deliveryStatus = status; });
}

void ChatMessages::removeAll(const QString &messageID) {
    for (int row = count() - 1; row >= 0; --row) {
        if (at(row).id == messageID)
            removeAt(row);
    }
}

int ChatMessages::rowOfPoll(const QString &pollID) const {
    const auto carrier =
        std::find_if(records().cbegin(), records().cend(), [&](const MessengerMessage &message) {
            return message.poll && message.poll->id == pollID;
        });
    return carrier == records().cend() ? -1 : int(carrier - records().cbegin());
}

} // namespace orvane
