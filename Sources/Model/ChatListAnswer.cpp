// SPDX-License-Identifier: MIT
#include "Model/ChatListAnswer.h"

#include "Base/FreshId.h"
#include "Base/Json.h"
#include "Base/Times.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

[[noreturn]] void fail(QStringView key) {
    throw DecodingError(u"The data couldn’t be read: \"%1\" is missing or has another type."_s.arg(key));
}

template <typename T>
T required(const QJsonObject &object, QStringView key, std::optional<T> (*as)(const QJsonValue &)) {
    auto value = as(object.value(key));
    if (!value)
        fail(key);
    return std::move(*value);
}

template <typename T>
std::optional<T> optional(const QJsonObject &object, QStringView key,
                          std::optional<T> (*as)(const QJsonValue &)) {
    const auto found = object.constFind(key);
    if (found == object.constEnd() || found->isNull())
        return std::nullopt;
    auto value = as(*found);
    if (!value)
        fail(key);
    return value;
}

std::optional<QList<AP>> asParticipants(const QJsonValue &value) {
    if (!value.isArray())
        return std::nullopt;
    const QJsonArray elements = value.toArray();
    QList<AP> participants;
    participants.reserve(elements.size());
    for (const auto &element : elements)
        participants.append(AP{required(element.toObject(), u"user_id", json::asInteger)});
    return participants;
}

AC decodeChat(const QJsonObject &object) {
    AC chat;
    chat.id = required(object, u"id", json::asText);
    chat.type = optional(object, u"type", json::asText);
    chat.title = optional(object, u"title", json::asText);
    chat.participants = optional(object, u"participants", asParticipants);
    chat.last_message = optional(object, u"last_message", json::asText);
    chat.last_msg_at = optional(object, u"last_msg_at", json::asNumber);
    chat.unread_count = optional(object, u"unread_count", json::asInteger);
    chat.ai_enabled = optional(object, u"ai_enabled", json::asBoolean);
    chat.federated = optional(object, u"federated", json::asBoolean);
    chat.zk_mode = optional(object, u"zk_mode", json::asBoolean);
    chat.room_id = optional(object, u"room_id", json::asText);
    return chat;
}

ChatType chatType(const std::optional<QString> &type) {
    if (type == "group"_L1)
        return ChatType::group;
    return type == "channel"_L1 ? ChatType::channel : ChatType::direct;
}

} // namespace

MessengerChat AC::toChat(const QDateTime &now) const {
    MessengerChat chat;
    chat.id = id;
    chat.type = chatType(type);
    chat.title = title;
    if (participants) {
        chat.participants.reserve(participants->size());
        for (const AP &participant : *participants)
            chat.participants.append(QString::number(participant.user_id));
    }
    if (last_message && last_msg_at) {
        MessengerMessage preview;
        preview.id = freshId();
        preview.chatID = id;
        preview.content = *last_message;
        preview.timestamp = times::fromUnixSeconds(*last_msg_at);
        preview.deliveryStatus = DeliveryStatus::sent;
        chat.lastMessage = std::move(preview);
    }
    chat.unreadCount = unread_count.value_or(0);
    chat.createdAt = now;
    chat.updatedAt = now;
    chat.aiEnabled = ai_enabled.value_or(true);
    chat.federated = federated.value_or(false);
    chat.zkMode = zk_mode.value_or(false);
    chat.roomId = room_id;
    return chat;
}

CR CR::decode(const QByteArray &bytes) {
    const auto top = json::parseObject(bytes);
    const auto elements = top ? json::list(*top, u"chats") : std::nullopt;
    if (!elements)
        fail(u"chats");
    CR answer;
    answer.chats.reserve(elements->size());
    for (const auto &element : *elements) {
        if (!element.isObject())
            fail(u"chats");
        answer.chats.append(decodeChat(element.toObject()));
    }
    return answer;
}

} // namespace orvane
