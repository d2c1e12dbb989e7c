// SPDX-License-Identifier: MIT
#include "Conversation/Chat/ChatNotificationBridge.h"

#include "Platform/DesktopNotifications.h"

#include <QDateTime>
#include <QLocale>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

double unixTime() {
    return double(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

} // namespace

ChatNotificationBridge::ChatNotificationBridge(std::unique_ptr<UserNotifications> notifications, Clock clock)
    : m_notifications(std::move(notifications))
    , m_clock(clock ? std::move(clock) : Clock(unixTime)) {
    m_notifications->requestAuthorization();
}

ChatNotificationBridge &ChatNotificationBridge::shared() {
    static auto *bridge = new ChatNotificationBridge(std::make_unique<DesktopNotifications>());
    return *bridge;
}

void ChatNotificationBridge::notify(const QString &chatID, const QString &chatName, const QString &senderName,
                                    const QString &message) {
    if (activeChatID == chatID)
        return;
    QString time = QString::number(m_clock(), 'f', QLocale::FloatingPointShortest);
    if (!time.contains(u'.'))
        time += u".0"_s;
    m_notifications->add(u"msg_%1_%2"_s.arg(chatID, time),
                         {senderName, chatName, message, {{u"chat_id"_s, chatID}}});
}

} // namespace orvane
