// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Conversation/Chat/Conversation.h"

#include <QCoroTask>

namespace orvane {

/// Sends what an open chat writes. Each message stands in the list at once, and its status tells how it went:
/// by the home server, else (texts only) straight to the peer, else by the queue once the network is back.
/// Main thread.
class MessageSender : public QObject {
    Q_OBJECT

    /// The next text answers it.
    OBSERVABLE_OPTIONAL(MessengerMessage, replyToMessage)

public:
    /// The conversation holds this.
    explicit MessageSender(Conversation &chat)
        : m_chat(chat) {}

    void sendText(const QString &text);
    void sendSticker(const QString &code);
    void sendPoll(const MessengerPoll &poll);
    /// Takes over a poll with the user's new choices and tells the others of them; a vote taken back is told
    /// to nobody.
    void votePoll(const MessengerPoll &poll);

private:
    using Chat = std::shared_ptr<Conversation>;

    static QCoro::Task<void> text(std::shared_ptr<MessageSender> self, QString text);
    static QCoro::Task<void> content(Chat chat, MessengerMessage message, QString content);

    MessengerMessage appended(MessageType type, const QString &content,
                              const std::optional<MessengerPoll> &poll = {});
    void postFailed(const MessengerMessage &message, const OutboundContent &content);
    bool sendDirectly(const MessengerMessage &message);

    Conversation &m_chat;
};

} // namespace orvane
