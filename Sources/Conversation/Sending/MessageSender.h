// SPDX-License-Identifier: MIT
#pragma once

#include "Conversation/Messages/MessageCipher.h"
#include "Model/MessengerMessage.h"

#include <QCoroTask>

#include <QString>

#include <memory>

namespace orvane {

class MessengerChatView;

/// Sends what an open chat writes. Each message stands in the list at once, and its status tells how it went:
/// by the home server, else (texts only) straight to the peer, else by the queue once the network is back.
/// Main thread.
class MessageSender {
public:
    explicit MessageSender(MessengerChatView &screen)
        : m_screen(screen) {}

    void sendText(const QString &text);
    void sendSticker(const QString &code);
    void sendPoll(const MessengerPoll &poll);

private:
    using Screen = std::shared_ptr<MessengerChatView>;

    static QCoro::Task<void> text(Screen screen, QString text);
    static QCoro::Task<void> content(Screen screen, MessengerMessage message, QString content);
    static void postFailed(MessengerChatView &screen, const MessengerMessage &message,
                           const OutboundContent &content);
    static bool sendDirectly(MessengerChatView &screen, const MessengerMessage &message);

    MessengerMessage appended(MessageType type, const QString &content,
                              const std::optional<MessengerPoll> &poll = {});

    MessengerChatView &m_screen;
};

} // namespace orvane
