// SPDX-License-Identifier: MIT
#pragma once

#include "Conversation/Chat/Conversation.h"

#include <QUrl>

namespace orvane {

/// Every message's text on a line of its own, without senders and times.
QString exportedConversation(Conversation &chat);

/// Writes the text as UTF-8 in place of whatever stood there, or not at all; a failure is dropped. Off the
/// main thread.
void writeExport(const QUrl &file, const QString &text);

} // namespace orvane
