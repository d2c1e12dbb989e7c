#pragma once

#include "Model/MessengerMessage.h"

#include <QtQml/qqmlregistration.h>

namespace orvane {

/// How a message stands among its neighbours.
class MessagePlacement {
    Q_GADGET
    QML_VALUE_TYPE(messagePlacement)
    /// No message of the same day stands before it.
    Q_PROPERTY(bool startsDay MEMBER startsDay)
    /// A run is an unbroken row of messages of one sender, each within five minutes of the one before.
    Q_PROPERTY(bool startsRun MEMBER startsRun)
    Q_PROPERTY(bool endsRun MEMBER endsRun)

public:
    bool startsDay = true;
    bool startsRun = true;
    bool endsRun = true;

    bool operator==(const MessagePlacement &) const = default;

    static MessagePlacement of(const QList<MessengerMessage> &messages, int row);
};

} // namespace orvane
