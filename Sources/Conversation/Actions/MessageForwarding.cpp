// SPDX-License-Identifier: MIT
#include "Conversation/Actions/MessageForwarding.h"

#include "Base/DescribedError.h"
#include "Base/FreshId.h"
#include "Base/LogLine.h"
#include "Base/Task.h"
#include "Base/Times.h"
#include "Conversation/Screen/MessengerChatView.h"
#include "Model/MessengerMock.h"
#include "Server/PostMessage.h"
#include "Session/UserIdText.h"

using namespace Qt::StringLiterals;

namespace orvane {

void MessageForwarding::loadAvailableChats() {
    launch(fetchChats(m_screen.shared_from_this()));
}

QCoro::Task<void> MessageForwarding::fetchChats(Screen screen) {
    QList<MessengerChat> chats = (co_await dropped(screen->parts().api.fetchChats(), "the samples stand in"))
                                     .value_or(MessengerMock::sampleChats());
    chats.removeIf([&](const MessengerChat &chat) { return chat.id == screen->chat.id; });
    screen->availableChats = chats;
}

void MessageForwarding::pick(const MessengerMessage &message) {
    m_screen.messageToForward = message;
    m_screen.showForwardPicker = true;
}

void MessageForwarding::forwardTo(const MessengerChat &target) {
    const std::optional<MessengerMessage> message = m_screen.messageToForward;
    if (!message)
        return;
    const auto sender = m_screen.contacts.constFind(message->senderID);
    const QJsonObject forwardedFrom{
        {u"original_chat_id"_s, m_screen.chat.id},
        {u"original_sender_id"_s, message->senderID},
        {u"original_sender_name"_s,
         sender == m_screen.contacts.constEnd() ? message->senderID : sender->displayName},
        {u"forwarded_at"_s, times::toUnixSeconds(QDateTime::currentDateTimeUtc())},
    };
    MessageCipher &cipher = m_screen.cipher();
    const QJsonObject body{
        {u"user_id"_s, parseUserId(m_screen.currentUserID).value_or(0)},
        {u"forwarded_from"_s, forwardedFrom},
        {u"content"_s, cipher.sealedPairwise(target.id, cipher.plainText(message->content))},
        {u"type"_s, u"text"_s},
    };
    m_screen.showForwardPicker = false;
    m_screen.messageToForward = std::nullopt;
    launch(post(m_screen.shared_from_this(), target.id, body));
}

QCoro::Task<void> MessageForwarding::post(Screen screen, QString chatID, QJsonObject body) {
    try {
        co_await postMessage(screen->parts().api, chatID, body, freshId());
        logLine(u"[Forward] Message forwarded"_s);
    } catch (const std::exception &error) {
        logLine(u"[Forward] Failed: "_s + localizedDescription(error));
    }
}

} // namespace orvane
