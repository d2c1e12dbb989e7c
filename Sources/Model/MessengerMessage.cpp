// SPDX-License-Identifier: MIT
#include "Model/MessengerMessage.h"

#include "Base/Json.h"
#include "Base/Times.h"

namespace orvane {

std::optional<MessengerMessage> MessengerMessage::fromHistory(const QString &chatID, const QJsonObject &raw) {
    auto id = json::text(raw, u"id");
    auto senderID = json::text(raw, u"sender_id");
    auto content = json::text(raw, u"content");
    const auto createdAt = json::number(raw, u"created_at");
    if (!id || !senderID || !content || !createdAt)
        return std::nullopt;

    MessengerMessage message;
    message.id = std::move(*id);
    message.chatID = chatID;
    message.senderID = std::move(*senderID);
    message.type = typeOf(raw);
    message.content = std::move(*content);
    message.timestamp = times::fromUnixSeconds(*createdAt);
    if (const auto editedAt = json::number(raw, u"edited_at"))
        message.editedAt = times::fromUnixSeconds(*editedAt);
    else if (json::boolean(raw, u"edited").value_or(false))
        message.editedAt = message.timestamp;
    if (const auto reactions = json::list(raw, u"reactions"))
        message.reactions = parseReactions(*reactions);
    message.isRead = true;
    message.deliveryStatus = DeliveryStatus::sent;
    return message;
}

MessageType MessengerMessage::typeOf(const QJsonObject &raw) {
    const auto type = json::text(raw, u"type");
    return type ? fromRawText<MessageType>(*type).value_or(MessageType::text) : MessageType::text;
}

QList<MessageReaction> MessengerMessage::parseReactions(const QJsonArray &list) {
    QList<MessageReaction> reactions;
    QHash<QString, qsizetype> placeOf;
    for (const auto &element : list) {
        if (!element.isObject())
            continue;
        const QJsonObject reaction = element.toObject();
        const auto emoji = json::text(reaction, u"emoji");
        auto user = json::text(reaction, u"user_id");
        if (const auto number = json::integer(reaction, u"user_id"))
            user = QString::number(*number);
        if (!emoji || !user)
            continue;
        const auto place = placeOf.constFind(*emoji);
        if (place != placeOf.constEnd()) {
            reactions[*place].userIDs.append(*user);
        } else {
            placeOf.insert(*emoji, reactions.size());
            MessageReaction first;
            first.emoji = *emoji;
            first.userIDs = {*user};
            reactions.append(first);
        }
    }
    return reactions;
}

} // namespace orvane
