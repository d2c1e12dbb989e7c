// SPDX-License-Identifier: MIT
#include "Model/MessengerMock.h"

#include "Base/FreshId.h"

using namespace Qt::StringLiterals;

namespace orvane::MessengerMock {

namespace {

constexpr auto assistantId = "ai_orvanetalk";

MessengerUser user(const QString &id, const QString &displayName, bool isAI) {
    MessengerUser result;
    result.id = id;
    result.displayName = displayName;
    result.status = UserStatus::offline;
    result.isAI = isAI;
    return result;
}

struct Sample {
    const char *id = nullptr;
    const char *title = nullptr;
    QStringList participants;
    qint64 unreadCount = 0;
    const char *senderID = nullptr;
    const char *content = nullptr;
    qint64 ageSeconds = 0;
    ChatType type{};
    MessageType messageType{};
};

MessengerChat chat(const Sample &sample, const QDateTime &now) {
    MessengerMessage last;
    last.id = freshId();
    last.chatID = QString::fromLatin1(sample.id);
    last.senderID = QString::fromLatin1(sample.senderID);
    last.type = sample.messageType;
    last.content = QString::fromLatin1(sample.content);
    last.timestamp = now.addSecs(-sample.ageSeconds);
    last.deliveryStatus = DeliveryStatus::sent;

    MessengerChat result;
    result.id = last.chatID;
    result.type = sample.type;
    if (sample.title)
        result.title = QString::fromLatin1(sample.title);
    result.participants = sample.participants;
    result.lastMessage = last;
    result.unreadCount = sample.unreadCount;
    result.createdAt = now;
    result.updatedAt = now;
    result.aiEnabled = true;
    return result;
}

} // namespace

const MessengerUser &currentUser() {
    static const MessengerUser me = user(u"me"_s, u"Alex"_s, false);
    return me;
}

const MessengerUser &aiAssistant() {
    static const MessengerUser assistant = user(QString::fromLatin1(assistantId), u"Orvane AI"_s, true);
    return assistant;
}

const QList<MessengerChat> &sampleChats() {
    static const QList<MessengerChat> chats = [] {
        const QDateTime now = QDateTime::currentDateTime();
        const QString me = u"me"_s;
        const QString assistant = QString::fromLatin1(assistantId);
        const QStringList team{me, u"u2"_s, u"u3"_s, u"u4"_s};
        const Sample samples[] = {
            {"c1", "Maria", {me, u"u1"_s}, 2, "u1", "Docs ready", 120, ChatType::direct, MessageType::text},
            {"c2", "Dev Team", team, 0, "u4", "Deploy done", 600, ChatType::group, MessageType::text},
            {"c3",
             nullptr,
             {me, assistant},
             1,
             assistantId,
             "Analyzed your chats today.",
             60,
             ChatType::direct,
             MessageType::aiResponse},
            {"c4",
             nullptr,
             {me, u"u5"_s},
             0,
             "me",
             "Text me when back",
             7200,
             ChatType::direct,
             MessageType::text},
        };
        QList<MessengerChat> result;
        for (const Sample &sample : samples)
            result.append(chat(sample, now));
        return result;
    }();
    return chats;
}

} // namespace orvane::MessengerMock
