// SPDX-License-Identifier: MIT
#include "ChatList/Chats/ListEvents.h"

#include "Base/FreshId.h"
#include "Base/Json.h"
#include "Model/MessengerUser.h"

namespace orvane {

std::optional<ArrivedMessage> ArrivedMessage::from(const QJsonObject &event) {
    const auto chatID = json::text(event, u"chat_id");
    const QJsonObject raw = json::object(event, u"message").value_or(QJsonObject());
    const auto content = json::text(raw, u"content");
    const auto senderID = json::text(raw, u"sender_id");
    if (!chatID || !content || !senderID)
        return std::nullopt;
    ArrivedMessage arrived;
    arrived.chatID = *chatID;
    MessengerMessage &message = arrived.message;
    message.id = json::text(raw, u"id").value_or(QString());
    if (message.id.isEmpty())
        message.id = freshId();
    message.chatID = *chatID;
    message.senderID = *senderID;
    message.content = *content;
    message.timestamp = QDateTime::currentDateTimeUtc();
    message.deliveryStatus = DeliveryStatus::sent;
    return arrived;
}

std::optional<PresenceChange> PresenceChange::from(const QJsonObject &event) {
    const auto userID = json::text(event, u"user_id");
    const auto status = json::text(event, u"status");
    if (!userID || !status)
        return std::nullopt;
    return PresenceChange{*userID, presenceOf(*status)};
}

} // namespace orvane
