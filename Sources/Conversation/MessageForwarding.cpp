#include "Conversation/MessageForwarding.h"

#include "Base/DescribedError.h"
#include "Base/FreshId.h"
#include "Base/LogLine.h"
#include "Base/Task.h"
#include "Base/Times.h"
#include "Conversation/MessengerChatView.h"
#include "Conversation/PostMessage.h"
#include "Model/MessengerMock.h"
#include "Session/UserIdText.h"

namespace orvane {

void MessageForwarding::loadAvailableChats() {
    launch(fetchChats(m_screen.shared_from_this()));
}

QCoro::Task<void> MessageForwarding::fetchChats(Screen screen) {
    QList<MessengerChat> chats;
    try {
        chats = co_await screen->parts().api.fetchChats();
    } catch (const std::exception &) {
        // Dropped on purpose: the samples stand in.
        chats = MessengerMock::sampleChats();
    }
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
        {QStringLiteral("original_chat_id"), m_screen.chat.id},
        {QStringLiteral("original_sender_id"), message->senderID},
        {QStringLiteral("original_sender_name"),
         sender == m_screen.contacts.constEnd() ? message->senderID : sender->displayName},
        {QStringLiteral("forwarded_at"), times::toUnixSeconds(QDateTime::currentDateTimeUtc())},
    };
    MessageCipher &cipher = m_screen.cipher();
    const QJsonObject body{
        {QStringLiteral("user_id"), parseUserId(m_screen.currentUserID).value_or(0)},
        {QStringLiteral("forwarded_from"), forwardedFrom},
        {QStringLiteral("content"), cipher.sealedPairwise(target.id, cipher.plainText(message->content))},
        {QStringLiteral("type"), QStringLiteral("text")},
    };
    m_screen.showForwardPicker = false;
    m_screen.messageToForward = std::nullopt;
    launch(post(m_screen.shared_from_this(), target.id, body));
}

QCoro::Task<void> MessageForwarding::post(Screen screen, QString chatID, QJsonObject body) {
    try {
        co_await postMessage(screen->parts().api, chatID, body, freshId());
        logLine(QStringLiteral("[Forward] Message forwarded"));
    } catch (const std::exception &error) {
        logLine(QStringLiteral("[Forward] Failed: ") + localizedDescription(error));
    }
}

} // namespace orvane
