// SPDX-License-Identifier: MIT
#include "Conversation/Sending/MessageSender.h"

#include "Base/FreshId.h"
#include "Base/LogLine.h"
#include "Base/Task.h"
#include "Base/Times.h"
#include "Conversation/Screen/MessengerChatView.h"
#include "Model/DerivedJson.h"
#include "Server/PostMessage.h"
#include "Session/UserIdText.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

MessengerMessage ownMessage(const MessengerChatView &screen, MessageType type, const QString &content) {
    MessengerMessage message;
    message.id = freshId();
    message.chatID = screen.chat.id;
    message.senderID = screen.currentUserID;
    message.type = type;
    message.content = content;
    message.timestamp = QDateTime::currentDateTimeUtc();
    message.deliveryStatus = DeliveryStatus::sending;
    return message;
}

QJsonObject bodyOf(const MessengerMessage &message, const QString &content) {
    return {{u"user_id"_s, parseUserId(message.senderID).value_or(0)},
            {u"content"_s, content},
            {u"type"_s, rawText(message.type)}};
}

} // namespace

void MessageSender::sendText(const QString &text) {
    launch(MessageSender::text(m_screen.shared_from_this(), text));
}

void MessageSender::sendSticker(const QString &code) {
    const MessengerMessage message = appended(MessageType::sticker, code);
    launch(content(m_screen.shared_from_this(), message,
                   m_screen.cipher().sealedPairwise(m_screen.chat.id, code)));
}

void MessageSender::sendPoll(const MessengerPoll &poll) {
    const MessengerMessage message = appended(MessageType::poll, poll.question, poll);
    const QByteArray json = QJsonDocument(derived::toJson(poll)).toJson(QJsonDocument::Compact);
    launch(content(m_screen.shared_from_this(), message, QString::fromUtf8(json)));
}

MessengerMessage MessageSender::appended(MessageType type, const QString &content,
                                         const std::optional<MessengerPoll> &poll) {
    MessengerMessage message = ownMessage(m_screen, type, content);
    message.poll = poll;
    m_screen.messages.append(message);
    return message;
}

QCoro::Task<void> MessageSender::text(Screen screen, QString text) {
    const OutboundContent content = co_await screen->cipher().prepareOutboundContent(text);
    MessengerMessage message = ownMessage(*screen, MessageType::text, content.displayContent);
    if (const auto &replied = screen->replyToMessage.value())
        message.replyToID = replied->id;
    screen->replyToMessage = std::nullopt;
    screen->messages.append(message);

    QJsonObject body = bodyOf(message, content.serverContent);
    if (message.replyToID)
        body.insert(u"reply_to"_s, *message.replyToID);
    if (content.zkPayload)
        body.insert(u"zk_payload"_s, *content.zkPayload);
    const bool isPosted = co_await dropped(
        postMessage(screen->parts().api, screen->chat.id, body, message.id), "the message's status tells");
    if (!isPosted) {
        postFailed(*screen, message, content);
        co_return;
    }
    screen->setDeliveryStatus(message.id, DeliveryStatus::sent);
    if (screen->chat.type == ChatType::direct)
        sendDirectly(*screen, message);
}

QCoro::Task<void> MessageSender::content(Screen screen, MessengerMessage message, QString content) {
    const QJsonObject body = bodyOf(message, content);
    const bool isPosted = co_await dropped(postMessage(screen->parts().api, screen->chat.id, body, freshId()),
                                           "the message's status tells");
    screen->setDeliveryStatus(message.id, isPosted ? DeliveryStatus::sent : DeliveryStatus::failed);
}

void MessageSender::postFailed(MessengerChatView &screen, const MessengerMessage &message,
                               const OutboundContent &content) {
    if (sendDirectly(screen, message)) {
        screen.setDeliveryStatus(message.id, DeliveryStatus::sent);
        return;
    }
    screen.setDeliveryStatus(message.id, DeliveryStatus::failed);
    QueuedMessage queued;
    queued.id = message.id;
    queued.chatID = message.chatID;
    queued.content = content.serverContent;
    queued.type = rawText(message.type);
    queued.userID = message.senderID;
    queued.timestamp = QDateTime::currentDateTimeUtc();
    screen.parts().queue().enqueue(queued);
}

bool MessageSender::sendDirectly(MessengerChatView &screen, const MessengerMessage &message) {
    const QString peer = screen.peerId();
    if (peer.isEmpty())
        return false;
    // The direct channel carries the plain text.
    const QJsonObject record{
        {u"id"_s, message.id},
        {u"sender_id"_s, message.senderID},
        {u"content"_s, message.content},
        {u"created_at"_s, times::toUnixSeconds(QDateTime::currentDateTimeUtc())},
        {u"type"_s, u"text"_s},
        {u"p2p"_s, true},
    };
    return screen.parts().directChannel().send(peer, screen.chat.id, record);
}

} // namespace orvane
