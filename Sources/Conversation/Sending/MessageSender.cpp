// SPDX-License-Identifier: MIT
#include "Conversation/Sending/MessageSender.h"

#include "Base/FreshId.h"
#include "Base/Task.h"
#include "Base/Times.h"
#include "Model/DerivedJson.h"
#include "Server/EventNames.h"
#include "Server/PostMessage.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

MessengerMessage ownMessage(const Conversation &chat, MessageType type, const QString &content) {
    MessengerMessage message;
    message.id = freshId();
    message.chatID = chat.chatID();
    message.senderID = chat.currentUserID;
    message.type = type;
    message.content = content;
    message.timestamp = QDateTime::currentDateTimeUtc();
    message.deliveryStatus = DeliveryStatus::sending;
    return message;
}

QJsonObject bodyOf(const Conversation &chat, const MessengerMessage &message, const QString &content) {
    return {{u"user_id"_s, chat.userNumber()}, {u"content"_s, content}, {u"type"_s, rawText(message.type)}};
}

} // namespace

void MessageSender::sendText(const QString &text) {
    launch(MessageSender::text(m_chat.hold(this), text));
}

void MessageSender::sendSticker(const QString &code) {
    const MessengerMessage message = appended(MessageType::sticker, code);
    launch(content(m_chat.shared_from_this(), message, m_chat.cipher.sealedPairwise(m_chat.chatID(), code)));
}

void MessageSender::sendPoll(const MessengerPoll &poll) {
    const MessengerMessage message = appended(MessageType::poll, poll.question, poll);
    const QByteArray json = QJsonDocument(derived::toJson(poll)).toJson(QJsonDocument::Compact);
    launch(content(m_chat.shared_from_this(), message, QString::fromUtf8(json)));
}

void MessageSender::votePoll(const MessengerPoll &poll) {
    const int row = m_chat.messages.rowOfPoll(poll.id);
    if (row < 0)
        return;
    m_chat.messages.changeAt(row, [&](MessengerMessage &message) { message.poll = poll; });
    for (const PollOption &option : poll.options) {
        if (option.voters.contains(m_chat.currentUserID))
            m_chat.parts.socket.send({{u"type"_s, eventname::pollVote},
                                      {u"user_id"_s, m_chat.currentUserID},
                                      {u"poll_id"_s, poll.id},
                                      {u"option_id"_s, option.id},
                                      {u"chat_id"_s, m_chat.chatID()}});
    }
}

MessengerMessage MessageSender::appended(MessageType type, const QString &content,
                                         const std::optional<MessengerPoll> &poll) {
    MessengerMessage message = ownMessage(m_chat, type, content);
    message.poll = poll;
    m_chat.messages.append(message);
    return message;
}

QCoro::Task<void> MessageSender::text(std::shared_ptr<MessageSender> self, QString text) {
    Conversation &chat = self->m_chat;
    const OutboundContent content = co_await chat.cipher.prepareOutboundContent(text);
    MessengerMessage message = ownMessage(chat, MessageType::text, content.displayContent);
    if (const auto &replied = self->replyToMessage.value())
        message.replyToID = replied->id;
    self->replyToMessage = std::nullopt;
    chat.messages.append(message);

    QJsonObject body = bodyOf(chat, message, content.serverContent);
    if (message.replyToID)
        body.insert(u"reply_to"_s, *message.replyToID);
    if (content.zkPayload)
        body.insert(u"zk_payload"_s, *content.zkPayload);
    const bool isPosted = co_await dropped(postMessage(chat.parts.api, chat.chatID(), body, message.id),
                                           "the message's status tells");
    if (!isPosted) {
        self->postFailed(message, content);
        co_return;
    }
    chat.messages.setDeliveryStatus(message.id, DeliveryStatus::sent);
    if (chat.chat.type == ChatType::direct)
        self->sendDirectly(message);
}

QCoro::Task<void> MessageSender::content(Chat chat, MessengerMessage message, QString content) {
    const QJsonObject body = bodyOf(*chat, message, content);
    const bool isPosted = co_await dropped(postMessage(chat->parts.api, chat->chatID(), body, freshId()),
                                           "the message's status tells");
    chat->messages.setDeliveryStatus(message.id, isPosted ? DeliveryStatus::sent : DeliveryStatus::failed);
}

void MessageSender::postFailed(const MessengerMessage &message, const OutboundContent &content) {
    if (sendDirectly(message)) {
        m_chat.messages.setDeliveryStatus(message.id, DeliveryStatus::sent);
        return;
    }
    m_chat.messages.setDeliveryStatus(message.id, DeliveryStatus::failed);
    QueuedMessage queued;
    queued.id = message.id;
    queued.chatID = message.chatID;
    queued.content = content.serverContent;
    queued.type = rawText(message.type);
    queued.userID = message.senderID;
    queued.timestamp = QDateTime::currentDateTimeUtc();
    m_chat.parts.queue().enqueue(queued);
}

bool MessageSender::sendDirectly(const MessengerMessage &message) {
    const QString peer = m_chat.peerId();
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
    return m_chat.parts.directChannel().send(peer, m_chat.chatID(), record);
}

} // namespace orvane
