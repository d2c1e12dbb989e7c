// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Chats/MessageStore.h"

namespace orvane::homeserver {

// Whether this robot says anything at all.
bool canAnswer(Database &database, qint64 robot);

// The robot's answer to a message of the given wire form.
NewMessage robotAnswer(Database &database, qint64 robot, const QJsonObject &message);

} // namespace orvane::homeserver
