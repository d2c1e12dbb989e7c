// SPDX-License-Identifier: MIT
#pragma once

#include "Server/MessengerWebSocket.h"

#include <QCoroTask>

#include <QJsonObject>

#include <memory>

namespace orvane {

class MessengerChatView;

/// What others do in an open chat, as the server and the local network tell it: new, changed and deleted
/// messages, reactions, receipts, votes, typing. An event that lacks what it needs changes nothing, and
/// nothing is sorted or looked for twice: the next history is the truth. Main thread.
class ChatEvents {
public:
    explicit ChatEvents(MessengerChatView &screen)
        : m_screen(screen) {}

    void handle(const WSEvent &event);
    /// A message that came over the local network: `chat_id`, `message`. An id that could be more than a
    /// segment of a path gives way to a fresh one.
    void handleDirect(const QJsonObject &userInfo);

private:
    static QCoro::Task<void> receive(std::shared_ptr<MessengerChatView> screen, QJsonObject raw);

    void edited(const QJsonObject &event);
    void deleted(const QJsonObject &event);
    void reaction(const QJsonObject &event);
    void readReceipt(const QJsonObject &event);
    void pollVote(const QJsonObject &event);
    void typing(const QJsonObject &event);

    MessengerChatView &m_screen;
};

} // namespace orvane
