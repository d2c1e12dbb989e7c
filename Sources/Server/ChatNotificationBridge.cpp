#include "Server/ChatNotificationBridge.h"

#include "Platform/DesktopNotifications.h"

#include <QDateTime>
#include <QLocale>

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
        time += QStringLiteral(".0");
    m_notifications->add(QStringLiteral("msg_%1_%2").arg(chatID, time),
                         {senderName, chatName, message, {{QStringLiteral("chat_id"), chatID}}});
}

} // namespace orvane
