// SPDX-License-Identifier: MIT
#include "ChatList/Finding/FoundMessages.h"

#include "Base/FreshId.h"
#include "Base/Json.h"
#include "Base/Times.h"

namespace orvane {

std::optional<SearchHit> SearchHit::from(const QJsonObject &record, const Contacts &contacts) {
    const auto chatID = json::text(record, u"chat_id");
    const auto content = json::text(record, u"content");
    const auto senderID = json::text(record, u"sender_id");
    if (!chatID || !content || !senderID)
        return std::nullopt;
    SearchHit hit;
    hit.id = freshId();
    hit.chatID = *chatID;
    hit.senderName = nameOf(*senderID, contacts, *senderID);
    hit.content = *content;
    hit.timestamp = QDateTime::currentDateTimeUtc();
    return hit;
}

std::optional<StarredMessage> StarredMessage::from(const QJsonObject &record) {
    const auto id = json::text(record, u"id");
    const auto chatID = json::text(record, u"chat_id");
    const auto senderID = json::text(record, u"sender_id");
    const auto content = json::text(record, u"content");
    if (!id || !chatID || !senderID || !content)
        return std::nullopt;
    const auto createdAt = json::number(record, u"created_at");
    StarredMessage message;
    message.id = *id;
    message.chatID = *chatID;
    message.senderID = *senderID;
    message.content = *content;
    message.timestamp = createdAt ? times::fromUnixSeconds(*createdAt) : QDateTime::currentDateTimeUtc();
    return message;
}

} // namespace orvane
