// SPDX-License-Identifier: MIT
#pragma once

#include "Conversation/Chat/Conversation.h"

#include <QCoroTask>

namespace orvane {

/// What is loaded of a chat, and all of it.
inline constexpr int historyPageSize = 50;

/// Fetches the latest page of a chat's history, which then replaces whatever the conversation holds, and
/// tells the others that it was read. Where no history can be had, a sample conversation stands in. Main
/// thread.
QCoro::Task<void> loadHistory(std::shared_ptr<Conversation> chat);

} // namespace orvane
