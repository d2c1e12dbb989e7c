// SPDX-License-Identifier: MIT
#include "Conversation/Chat/Conversation.h"

#include "Model/Words.h"
#include "Session/UserIdText.h"

using namespace Qt::StringLiterals;

namespace orvane {

Conversation::Conversation(const MessengerChat &openChat, const Contacts &known, const QString &userID,
                           const ChatParts &chatParts)
    : chat(openChat)
    , contacts(known)
    , currentUserID(userID)
    , parts(chatParts)
    , cipher(chat, chatParts.api, chatParts.encryption) {}

qint64 Conversation::userNumber() const {
    return parseUserId(currentUserID).value_or(0);
}

QString Conversation::senderName(const QString &userID) const {
    return nameOf(userID, contacts, u"Someone"_s);
}

QString Conversation::nameInChat(const QString &userID) const {
    return userID == currentUserID ? u"You"_s : senderName(userID);
}

QString Conversation::lineOf(const QString &content) {
    return asOneLine(cipher.plainText(content));
}

} // namespace orvane
