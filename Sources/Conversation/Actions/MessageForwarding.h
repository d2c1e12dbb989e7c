// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerChat.h"

#include <QCoroTask>

#include <QJsonObject>
#include <QString>

#include <memory>

namespace orvane {

class MessengerChatView;

/// Sends a message of the open chat on to another one. Main thread.
class MessageForwarding {
public:
    explicit MessageForwarding(MessengerChatView &screen)
        : m_screen(screen) {}

    /// The chats that can be forwarded to; the sample chats where the server's can't be had.
    void loadAvailableChats();
    /// Opens the picker.
    void pick(const MessengerMessage &message);
    /// Closes the picker; without a picked message nothing is sent.
    void forwardTo(const MessengerChat &target);

private:
    using Screen = std::shared_ptr<MessengerChatView>;

    static QCoro::Task<void> fetchChats(Screen screen);
    static QCoro::Task<void> post(Screen screen, QString chatID, QJsonObject body);

    MessengerChatView &m_screen;
};

} // namespace orvane
