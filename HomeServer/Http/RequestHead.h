// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Http/Message.h"

namespace orvane::homeserver {

// What stands before the body of a request.
struct RequestHead {
    Request request;             // without its body and its address
    QByteArray forwardedFor;     // the last address that a proxy put down, or empty
    qint64 bodyLength = 0;       // bytes
    bool keepAlive = true;       // further requests may follow on the connection
    bool expectContinue = false; // the client waits for a word before it sends the body
};

// Reads the request line and the header fields (RFC 9112), up to and without the empty line. Refuses with
// 400 what is none, with 411 a body of unknown length, and with 501 another version of the protocol.
RequestHead parseHead(const QByteArray &bytes);

} // namespace orvane::homeserver
