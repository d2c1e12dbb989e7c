// SPDX-License-Identifier: MIT
#include "ChatList/Organising/ChatAnswer.h"

#include "Base/Json.h"

namespace orvane {

QJsonObject unwrapped(const QJsonObject &answer, QStringView key) {
    return json::object(answer, key).value_or(answer);
}

std::optional<QString> chatIdIn(const QJsonObject &object) {
    const auto id = json::text(object, u"id");
    return id ? id : json::text(object, u"chat_id");
}

MessengerChat newChat(const QString &id, ChatType type, const QString &title) {
    MessengerChat chat;
    chat.id = id;
    chat.type = type;
    chat.title = title;
    chat.createdAt = chat.updatedAt = QDateTime::currentDateTimeUtc();
    return chat;
}

} // namespace orvane
