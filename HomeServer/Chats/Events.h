// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QString>

// The frames that the server sends of its own accord.
namespace orvane::homeserver {

inline QJsonObject chatEvent(QLatin1StringView type, const QString &chatId) {
    using namespace Qt::StringLiterals;
    return {{"type"_L1, type}, {"chat_id"_L1, chatId}};
}

inline QJsonObject statusEvent(qint64 userId, bool online) {
    using namespace Qt::StringLiterals;
    return {{"type"_L1, "user_status"_L1},
            {"user_id"_L1, QString::number(userId)},
            {"status"_L1, online ? "online"_L1 : "offline"_L1}};
}

inline QJsonObject typingEvent(const QString &chatId, qint64 userId, bool typing) {
    using namespace Qt::StringLiterals;
    QJsonObject event = chatEvent("typing"_L1, chatId);
    event["user_id"_L1] = QString::number(userId);
    event["is_typing"_L1] = typing;
    return event;
}

inline QJsonObject messageEvent(QLatin1StringView type, const QString &chatId, const QJsonObject &message) {
    using namespace Qt::StringLiterals;
    QJsonObject event = chatEvent(type, chatId);
    event["message"_L1] = message;
    return event;
}

} // namespace orvane::homeserver
