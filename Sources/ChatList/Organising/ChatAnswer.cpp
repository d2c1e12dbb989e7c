// SPDX-License-Identifier: MIT
#include "ChatList/Organising/ChatAnswer.h"

#include "Base/Json.h"

namespace orvane {

namespace {

QJsonObject unwrapped(const QJsonObject &answer, QStringView key) {
    return json::object(answer, key).value_or(answer);
}

std::optional<QString> idIn(const QJsonObject &chat) {
    const auto id = json::text(chat, u"id");
    return id ? id : json::text(chat, u"chat_id");
}

} // namespace

MessengerChat newChat(const QString &id, ChatType type, const QString &title) {
    MessengerChat chat;
    chat.id = id;
    chat.type = type;
    chat.title = title;
    chat.createdAt = chat.updatedAt = QDateTime::currentDateTimeUtc();
    return chat;
}

std::optional<QString> chatIdIn(const QJsonObject &answer) {
    return idIn(unwrapped(answer, u"chat"));
}

std::optional<MessengerChat> createdGroup(const QJsonObject &answer, const QString &title,
                                          const QStringList &participants) {
    const QJsonObject map = unwrapped(answer, u"chat");
    const auto id = idIn(map);
    if (!id)
        return std::nullopt;
    MessengerChat chat = newChat(*id, ChatType::group, json::text(map, u"title").value_or(title));
    chat.participants = participants;
    chat.federated = json::boolean(map, u"federated").value_or(false);
    chat.zkMode = json::boolean(map, u"zk_mode").value_or(false);
    chat.roomId = json::text(map, u"room_id");
    return chat;
}

std::optional<MessengerChat> createdChannel(const QJsonObject &answer, const QString &title) {
    const QJsonObject map = unwrapped(answer, u"channel");
    const auto id = idIn(map);
    if (!id)
        return std::nullopt;
    return newChat(*id, ChatType::channel, json::text(map, u"title").value_or(title));
}

std::optional<MessengerChat> listedChannel(const QJsonObject &record) {
    const auto id = json::text(record, u"id");
    if (!id)
        return std::nullopt;
    MessengerChat channel = newChat(*id, ChatType::channel, QString());
    const auto title = json::text(record, u"title");
    channel.title = title ? title : json::text(record, u"name");
    return channel;
}

} // namespace orvane
