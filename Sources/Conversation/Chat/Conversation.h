// SPDX-License-Identifier: MIT
#pragma once

#include "Conversation/Chat/ChatMessages.h"
#include "Conversation/Chat/ChatParts.h"
#include "Conversation/Chat/MessageCipher.h"
#include "Model/MessengerChat.h"

#include <memory>

namespace orvane {

/// A chat while it is open: who talks, what was said, and what all of it stands on. The screen is one, and
/// what the screen is made of works on this and knows nothing of the screen. Main thread.
class Conversation : public std::enable_shared_from_this<Conversation> {
public:
    Conversation(const MessengerChat &openChat, const Contacts &known, const QString &userID,
                 const ChatParts &chatParts);
    Q_DISABLE_COPY_MOVE(Conversation)

    const MessengerChat chat;
    Contacts contacts;
    const QString currentUserID;
    ChatMessages messages;
    const ChatParts parts;
    MessageCipher cipher;

    const QString &chatID() const { return chat.id; }
    QString peerId() const { return chat.peerId(currentUserID); }
    /// As requests say it; 0 for an id that is no number.
    qint64 userNumber() const;
    bool isOwn(const MessengerMessage &message) const { return message.senderID == currentUserID; }
    QString senderName(const QString &userID) const;
    /// The same, but "You" for the person at this window.
    QString nameInChat(const QString &userID) const;
    /// A content as a person reads it where there is room for one line.
    QString lineOf(const QString &content);

    /// For a task of something that lives in this conversation: holds the whole of it.
    template <typename Member>
    std::shared_ptr<Member> hold(Member *member) {
        return {shared_from_this(), member};
    }

protected:
    ~Conversation() = default;
};

} // namespace orvane
