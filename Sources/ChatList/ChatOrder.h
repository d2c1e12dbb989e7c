#pragma once

#include "Model/MessengerChat.h"

/// The order of the chat list: the later date first, where a chat's date is that of its last message, else
/// its own.
namespace orvane {

QDateTime dateOf(const MessengerChat &chat);

/// For a stable sort: equal dates keep their order.
bool standsBefore(const MessengerChat &a, const MessengerChat &b);

/// The row that `chat`, which stands somewhere in the otherwise sorted `chats`, belongs to.
int rowFor(const MessengerChat &chat, const QList<MessengerChat> &chats);

} // namespace orvane
