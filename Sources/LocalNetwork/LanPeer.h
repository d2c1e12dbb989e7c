// SPDX-License-Identifier: MIT
#pragma once

#include "Model/Record.h"

#include <QString>
#include <QtQml/qqmlregistration.h>

namespace orvane {

#define LAN_PEER(FIELD, OPTIONAL, ENUM)                                                                      \
    FIELD(QString, id)                                                                                       \
    FIELD(QString, name)                                                                                     \
    FIELD(QString, address)                                                                                  \
    FIELD(QString, status)                                                                                   \
    FIELD(bool, reachable)

/// A row of the panel: somebody on the same network, in the words that are shown.
class LanPeer {
    Q_GADGET
    QML_VALUE_TYPE(lanPeer)
    RECORD(LanPeer, LAN_PEER)
};

} // namespace orvane
