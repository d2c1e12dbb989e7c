// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Http/Gate.h"

#include <QHostAddress>
#include <QString>
#include <QtGlobal>

#include <functional>

namespace orvane::homeserver {

// Who may make an account.
enum class Registration {
    Open,
    Invited, // whoever brings the code of an invitation to a chat
    Closed,
};

// How one home server runs. Times are milliseconds unless told otherwise.
struct Options {
    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
    quint16 httpPort = 0;      // 0 picks a free port
    quint16 webSocketPort = 0; // 0 picks a free port
    QString dataFolder;        // made when missing; database and uploads live in it
    int botDelay = -1;         // from a message to the robot's answer; negative: 300 to 600
    int authTimeout = 10'000;  // from connecting an event socket to its first frame
    int patience = 10'000;     // with a slow request: for its head, for each piece of its body
    GateBounds connections;    // of each of the two ports
    qint64 maxUnsentBytes = 4LL * 1024 * 1024;    // for one event socket, then it is closed
    qint64 maxStoredBytes = 2048LL * 1024 * 1024; // uploads of all users together
    Registration registration = Registration::Open;
    bool allowLocalPeers = false;  // whether requests on a user's word may go to private addresses
    QString aiUrl;                 // OpenAI-compatible base, or empty
    std::function<double()> clock; // Unix seconds; empty: the system's clock
};

} // namespace orvane::homeserver
