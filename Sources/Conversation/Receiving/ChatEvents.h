// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Conversation/Chat/Conversation.h"

#include <QCoroTask>
#include <QSet>

namespace orvane {

/// What others do in an open chat, as the server and the local network tell it: new, changed and deleted
/// messages, reactions, receipts, votes, typing. An event that lacks what it needs changes nothing, and
/// nothing is sorted or looked for twice: the next history is the truth. Main thread.
class ChatEvents : public QObject {
    Q_OBJECT

    OBSERVABLE(QSet<QString>, typingUserIDs)

public:
    /// The conversation holds this.
    explicit ChatEvents(Conversation &chat)
        : m_chat(chat) {}

    /// From now on, once more with each call.
    void followServer();
    void followLocalNetwork();

private:
    static QCoro::Task<void> receive(std::shared_ptr<Conversation> chat, QJsonObject raw);

    void handle(const WSEvent &event);
    /// A message that came over the local network: `chat_id`, `message`. An id that could be more than a
    /// segment of a path gives way to a fresh one.
    void handleDirect(const QJsonObject &userInfo);
    void edited(const QJsonObject &event);
    void deleted(const QJsonObject &event);
    void reaction(const QJsonObject &event);
    void readReceipt(const QJsonObject &event);
    void pollVote(const QJsonObject &event);
    void typing(const QJsonObject &event);

    Conversation &m_chat;
};

} // namespace orvane
