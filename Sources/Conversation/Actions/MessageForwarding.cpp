// SPDX-License-Identifier: MIT
#include "Conversation/Actions/MessageForwarding.h"

#include "Base/DescribedError.h"
#include "Base/FreshId.h"
#include "Base/LogLine.h"
#include "Base/Task.h"
#include "Base/Times.h"
#include "Model/MessengerMock.h"
#include "Server/PostMessage.h"

using namespace Qt::StringLiterals;

namespace orvane {

void MessageForwarding::loadAvailableChats() {
    launch(fetchChats(m_chat.hold(this)));
}

QCoro::Task<void> MessageForwarding::fetchChats(std::shared_ptr<MessageForwarding> self) {
    QList<MessengerChat> chats =
        (co_await dropped(self->m_chat.parts.api.fetchChats(), "the samples stand in"))
            .value_or(MessengerMock::sampleChats());
    chats.removeIf([&](const MessengerChat &chat) { return chat.id == self->m_chat.chatID(); });
    self->availableChats = chats;
}

void MessageForwarding::pick(const MessengerMessage &message) {
    messageToForward = message;
    showForwardPicker = true;
}

void MessageForwarding::forwardTo(const MessengerChat &target) {
    const std::optional<MessengerMessage> message = messageToForward;
    if (!message)
        return;
    const QJsonObject forwardedFrom{
        {u"original_chat_id"_s, m_chat.chatID()},
        {u"original_sender_id"_s, message->senderID},
        {u"original_sender_name"_s, orvane::nameOf(message->senderID, m_chat.contacts, message->senderID)},
        {u"forwarded_at"_s, times::toUnixSeconds(QDateTime::currentDateTimeUtc())},
    };
    MessageCipher &cipher = m_chat.cipher;
    const QJsonObject body{
        {u"user_id"_s, m_chat.userNumber()},
        {u"forwarded_from"_s, forwardedFrom},
        {u"content"_s, cipher.sealedPairwise(target.id, cipher.plainText(message->content))},
        {u"type"_s, u"text"_s},
    };
    showForwardPicker = false;
    messageToForward = std::nullopt;
    launch(post(m_chat.shared_from_this(), target.id, body));
}

QCoro::Task<void> MessageForwarding::post(std::shared_ptr<Conversation> chat, QString chatID,
                                          QJsonObject body) {
    try {
        co_await postMessage(chat->parts.api, chatID, body, freshId());
        logLine(u"[Forward] Message forwarded"_s);
    } catch (const std::exception &error) {
        logLine(u"[Forward] Failed: "_s + localizedDescription(error));
    }
}

QString MessageForwarding::nameOf(const MessengerChat &target) const {
    return target.visibleName(m_chat.currentUserID, m_chat.contacts);
}

QString MessageForwarding::hueIdOf(const MessengerChat &target) const {
    return target.hueId(m_chat.currentUserID);
}

} // namespace orvane
