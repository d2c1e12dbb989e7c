// SPDX-License-Identifier: MIT
#include "Platform/DesktopNotifications.h"

#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const auto service = u"org.freedesktop.Notifications"_s;
const auto path = u"/org/freedesktop/Notifications"_s;
const auto application = u"com.orvanetalk.OrvaneTalk"_s;

// No desktop shows more, and some are brought down by it.
constexpr int longestTitle = 200;
constexpr int longestBody = 1000;
// Messages may come faster than a service that is just being started answers.
constexpr int mostWaiting = 50;

QString shown(const QString &text, int longest) {
    QString result;
    result.reserve(std::min<qsizetype>(text.size(), longest));
    for (const QChar c : text) {
        if (result.size() >= longest && !c.isLowSurrogate())
            return result + u'…';
        if (c == u'\n' || c.category() != QChar::Other_Control)
            result.append(c);
    }
    return result;
}

QDBusMessage call(const QString &method) {
    return QDBusMessage::createMethodCall(service, path, service, method);
}

} // namespace

QString notificationBody(const NotificationContent &content, bool readsMarkup) {
    QString body = content.body;
    if (!content.subtitle.isEmpty() && content.subtitle != content.title)
        body = shown(content.subtitle, longestTitle) + u'\n' + body;
    body = shown(body, longestBody);
    return readsMarkup ? body.toHtmlEscaped() : body;
}

DesktopNotifications::DesktopNotifications(const QDBusConnection &bus, NotificationCentre &centre)
    : m_bus(bus)
    , m_centre(centre) {
    m_bus.connect(service, path, service, u"ActionInvoked"_s, this, SLOT(activated(uint, QString)));
    m_bus.connect(service, path, service, u"NotificationClosed"_s, this, SLOT(closed(uint, uint)));
    m_bus.connect(service, path, service, u"ActivationToken"_s, this,
                  SLOT(takeActivationToken(uint, QString)));
    // Another service numbers anew, and can do other things.
    auto *watcher = new QDBusServiceWatcher(service, m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] {
        m_capabilities.reset();
        m_shown.clear();
    });
}

void DesktopNotifications::add(const QString &, const NotificationContent &content) {
    if (m_capabilities) {
        show(content);
        return;
    }
    if (m_waiting.size() < mostWaiting)
        m_waiting.append(content);
    if (!m_asking)
        askCapabilities();
}

void DesktopNotifications::askCapabilities() {
    m_asking = true;
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(call(u"GetCapabilities"_s)), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        const QDBusPendingReply<QStringList> reply = *answer;
        answer->deleteLater();
        m_asking = false;
        const QList<NotificationContent> waiting = std::exchange(m_waiting, {});
        if (reply.isError())
            return;
        m_capabilities = reply.value();
        for (const NotificationContent &content : waiting)
            show(content);
    });
}

void DesktopNotifications::show(const NotificationContent &content) {
    const QVariantMap hints{{u"desktop-entry"_s, application},
                            {u"sound-name"_s, u"message-new-instant"_s},
                            {u"category"_s, u"im.received"_s}};
    const QStringList actions{u"default"_s, u"Open"_s};
    const bool takesMarkup = m_capabilities && m_capabilities->contains(u"body-markup"_s);
    QDBusMessage notify = call(u"Notify"_s);
    notify << u"OrvaneTalk"_s << uint(0) << application << shown(content.title, longestTitle)
           << notificationBody(content, takesMarkup) << actions << hints << -1;
    auto *answer = new QDBusPendingCallWatcher(m_bus.asyncCall(notify), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, info = content.userInfo] {
        const QDBusPendingReply<uint> reply = *answer;
        answer->deleteLater();
        if (!reply.isError())
            m_shown.insert(reply.value(), info);
    });
}

void DesktopNotifications::activated(uint id, const QString &action) {
    const auto info = m_shown.constFind(id);
    if (info != m_shown.constEnd() && action == "default"_L1)
        m_centre.post(orvaneOpenChat, *info);
}

void DesktopNotifications::closed(uint id, uint) {
    m_shown.remove(id);
}

// The window may come to the front only with the desktop's token, which the toolkit reads here.
void DesktopNotifications::takeActivationToken(uint id, const QString &token) {
    if (m_shown.contains(id))
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

} // namespace orvane
