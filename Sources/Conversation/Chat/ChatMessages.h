// SPDX-License-Identifier: MIT
#pragma once

#include "Base/RecordList.h"
#include "Model/MessengerMessage.h"

namespace orvane {

/// The messages of an open chat, oldest first. Main thread.
class ChatMessages : public RecordList<MessengerMessage> {
public:
    using RecordList::RecordList;

    /// Changes the record in this row; a row of -1 changes nothing.
    template <typename Change>
    void changeAt(int row, Change change) {
        if (row < 0)
            return;
        MessengerMessage message = at(row);
        change(message);
        replace(row, message);
    }
    /// Changes the first record with this id, if there is one.
    template <typename Change>
    void change(const QString &messageID, Change change) {
        changeAt(rowOf(messageID), change);
    }
    void setDeliveryStatus(const QString &messageID, DeliveryStatus status);
    void removeAll(const QString &messageID);
    /// The first row with this poll, or -1.
    int rowOfPoll(const QString &pollID) const;
};

} // namespace orvane
