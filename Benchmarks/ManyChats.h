// SPDX-License-Identifier: MIT
#pragma once

#include "ChatList/Screen/MessengerChatListView.h"
#include "Support/OpenChatParts.h"

#include <QJsonArray>
#include <QTest>

namespace orvane::benchmarks {

/// The main screen with so many chats of user 7, from a server on loopback; every third is a group. Nobody is
/// notified.
class ManyChats {
public:
    explicit ManyChats(int count) {
        m_parts.session.currentUserId = 7;
        http().answerFor("/api/messenger/chats", ScriptedAnswer::of(200, answer(count)));
        ChatParts parts = m_parts.chatParts();
        parts.notifications = [this]() -> ChatNotificationBridge & { return m_silence; };
        m_list =
            std::make_shared<MessengerChatListView>(MessengerChatListView::Parts{parts, m_parts.session});
    }

    MessengerChatListView &list() { return *m_list; }
    MessengerWebSocket &socket() { return m_parts.socket; }
    ScriptedHttpServer &http() { return m_parts.http; }

    void load() {
        m_list->loadData();
        awaitChats();
    }
    /// For a window that has begun to load them.
    void awaitChats() {
        if (!QTest::qWaitFor([this] { return !m_list->isLoading; }, 60'000))
            qFatal("The chats do not come.");
    }

private:
    struct Silence : UserNotifications {
        void requestAuthorization() override {}
        void add(const QString &, const NotificationContent &) override {}
    };

    static QByteArray answer(int count) {
        using namespace Qt::StringLiterals;
        QJsonArray chats;
        for (int index = 0; index < count; ++index)
            chats.append(
                QJsonObject{{u"id"_s, QString::number(index)},
                            {u"type"_s, index % 3 ? u"direct"_s : u"group"_s},
                            {u"title"_s, u"Планёрка %1"_s.arg(index)},
                            {u"participants"_s, QJsonArray{QJsonObject{{u"user_id"_s, 7}},
                                                           QJsonObject{{u"user_id"_s, 100 + index}}}},
                            {u"last_message"_s, u"See you at eleven, bring the numbers."_s},
                            {u"last_msg_at"_s, 1'700'000'000.5 - index},
                            {u"unread_count"_s, index % 5},
                            {u"created_at"_s, 1'690'000'000}});
        return json::compact({{u"chats"_s, chats}});
    }

    OpenChatParts m_parts;
    ChatNotificationBridge m_silence{std::make_unique<Silence>()};
    std::shared_ptr<MessengerChatListView> m_list;
};

} // namespace orvane::benchmarks
