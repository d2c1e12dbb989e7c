// SPDX-License-Identifier: MIT
#pragma once

#include "AI/MessengerAIService.h"
#include "Base/NotificationCentre.h"
#include "Conversation/Chat/ChatNotificationBridge.h"
#include "Encryption/EndToEnd.h"
#include "LocalNetwork/MessengerP2PDataChannel.h"
#include "OfflineQueue/MessengerOfflineQueue.h"
#include "Platform/Pasteboard.h"
#include "Server/MessengerAPI.h"
#include "Server/MessengerWebSocket.h"

#include <functional>

namespace orvane {

/// What an open chat stands on; it all outlives it. What stands behind a function is made at its first use.
struct ChatParts {
    MessengerAPI &api;
    MessengerWebSocket &socket;
    std::function<ChatNotificationBridge &()> notifications = &ChatNotificationBridge::shared;
    std::function<MessengerOfflineQueue &()> queue = &MessengerOfflineQueue::shared;
    std::function<MessengerP2PDataChannel &()> directChannel = &MessengerP2PDataChannel::shared;
    std::function<MessengerAIService &()> ai = &MessengerAIService::shared;
    /// Null where the end-to-end layer is off.
    const EndToEnd *encryption = nullptr;
    NotificationCentre &centre = NotificationCentre::shared();
    std::function<void(const QString &)> setPasteboard = &setPasteboardText;
};

} // namespace orvane
