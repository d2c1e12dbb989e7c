// SPDX-License-Identifier: MIT
#include "Conversation/Receiving/ChatEvents.h"

#include "Base/FreshId.h"
#include "Base/Json.h"
#include "Base/Task.h"
#include "Base/Times.h"
#include "LocalNetwork/DirectMessages.h"
#include "RichContent/PollVotes.h"
#include "Server/EventNames.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QDateTime timeOf(const QJsonObject &raw) {
    const auto createdAt = json::number(raw, u"created_at");
    return createdAt ? times::fromUnixSeconds(*createdAt) : QDateTime::currentDateTimeUtc();
}

// An id goes into paths of requests as it is, and here a stranger wrote it.
bool isHarmlessId(const QString &id) {
    constexpr qsizetype longest = 64;
    const auto isHarmless = [](QChar c) {
        return c == u'-' || c == u'_' || (c.unicode() < 0x80 && c.isLetterOrNumber());
    };
    return !id.isEmpty() && id.size() <= longest && std::all_of(id.begin(), id.end(), isHarmless);
}

} // namespace

void ChatEvents::followServer() {
    connect(&m_chat.parts.socket, &MessengerWebSocket::events, this, &ChatEvents::handle);
}

void ChatEvents::followLocalNetwork() {
    connect(&m_chat.parts.centre, &NotificationCentre::posted, this,
            [this](const QString &name, const QJsonObject &userInfo) {
                if (name == orvaneP2PMessage)
                    handleDirect(userInfo);
            });
}

void ChatEvents::handle(const WSEvent &event) {
    using Handler = void (ChatEvents::*)(const QJsonObject &);
    static const QHash<QString, Handler> handlers{
        {eventname::messageEdited, &ChatEvents::edited}, {eventname::messageDeleted, &ChatEvents::deleted},
        {eventname::reaction, &ChatEvents::reaction},    {eventname::readReceipt, &ChatEvents::readReceipt},
        {eventname::pollVote, &ChatEvents::pollVote},    {eventname::typing, &ChatEvents::typing},
    };
    if (json::text(event.data, u"chat_id") != m_chat.chatID())
        return;
    if (event.type == eventname::message) {
        if (const auto raw = json::object(event.data, u"message"))
            launch(receive(m_chat.shared_from_this(), *raw));
    } else if (const Handler handler = handlers.value(event.type)) {
        (this->*handler)(event.data);
    }
}

QCoro::Task<void> ChatEvents::receive(std::shared_ptr<Conversation> chat, QJsonObject raw) {
    const auto id = json::text(raw, u"id");
    const auto senderID = json::text(raw, u"sender_id");
    const auto content = json::text(raw, u"content");
    if (!id || !senderID || !content)
        co_return;
    MessengerMessage message;
    message.id = *id;
    message.chatID = chat->chatID();
    message.senderID = *senderID;
    message.type = MessengerMessage::typeOf(raw);
    message.timestamp = timeOf(raw);
    const QString text = co_await chat->cipher.liveContent(raw, *content);
    message.content = text;
    message.deliveryStatus = DeliveryStatus::sent;
    chat->messages.append(message);
}

void ChatEvents::handleDirect(const QJsonObject &userInfo) {
    const auto raw = json::object(userInfo, u"message");
    if (json::text(userInfo, u"chat_id") != m_chat.chatID() || !raw)
        return;
    const auto senderID = json::text(*raw, u"sender_id");
    const auto content = json::text(*raw, u"content");
    if (!senderID || !content)
        return;
    MessengerMessage message;
    const auto id = json::text(*raw, u"id");
    message.id = id && isHarmlessId(*id) ? *id : freshId();
    message.chatID = m_chat.chatID();
    message.senderID = *senderID;
    message.content = *content;
    message.timestamp = timeOf(*raw);
    message.deliveryStatus = DeliveryStatus::sent;
    m_chat.messages.append(message);
}

void ChatEvents::edited(const QJsonObject &event) {
    const auto raw = json::object(event, u"message");
    if (!raw)
        return;
    const auto id = json::text(*raw, u"id");
    const auto content = json::text(*raw, u"content");
    if (!id || !content)
        return;
    m_chat.messages.change(*id, [&](MessengerMessage &message) {
        message.content = *content;
        message.editedAt = QDateTime::currentDateTimeUtc();
    });
}

void ChatEvents::deleted(const QJsonObject &event) {
    if (const auto id = json::text(event, u"message_id"))
        m_chat.messages.removeAll(*id);
}

void ChatEvents::reaction(const QJsonObject &event) {
    const auto id = json::text(event, u"message_id");
    const auto reactions = json::list(event, u"reactions");
    if (!id || !reactions)
        return;
    m_chat.messages.change(*id, [&](MessengerMessage &message) {
        message.reactions = MessengerMessage::parseReactions(*reactions);
    });
}

void ChatEvents::readReceipt(const QJsonObject &event) {
    QStringList ids;
    if (const auto list = json::texts(event, u"message_ids"))
        ids = *list;
    else if (const auto id = json::text(event, u"message_id"))
        ids = {*id};
    for (const QString &id : ids)
        m_chat.messages.change(id, [](MessengerMessage &message) {
            message.isRead = true;
            message.deliveryStatus = DeliveryStatus::read;
        });
}

void ChatEvents::pollVote(const QJsonObject &event) {
    const auto pollID = json::text(event, u"poll_id");
    const auto voterID = json::text(event, u"voter_id");
    const auto results = json::object(event, u"results");
    if (!pollID || !voterID || !results || !json::text(event, u"option_id"))
        return;
    m_chat.messages.changeAt(m_chat.messages.rowOfPoll(*pollID), [&](MessengerMessage &message) {
        message.poll = PollVotes::told(*message.poll, *voterID, *results);
    });
}

void ChatEvents::typing(const QJsonObject &event) {
    const auto userID = json::text(event, u"user_id");
    const auto isTyping = json::boolean(event, u"is_typing");
    if (!userID || !isTyping)
        return;
    QSet<QString> typing = typingUserIDs;
    if (*isTyping)
        typing.insert(*userID);
    else
        typing.remove(*userID);
    typingUserIDs = typing;
}

} // namespace orvane
