// SPDX-License-Identifier: MIT
#pragma once

#include "Conversation/Chat/Conversation.h"

/// What a person does to one message of an open chat. Failures are logged at most, never shown. Main thread.
namespace orvane {

/// As a person reads it.
void copyMessage(Conversation &chat, const MessengerMessage &message);

/// Changes at once, and changes back when the server refuses.
void toggleStar(Conversation &chat, const MessengerMessage &message);

/// Waits for the server, which decides what the reactions are.
void reactToMessage(Conversation &chat, const MessengerMessage &message, const QString &emoji);

} // namespace orvane
