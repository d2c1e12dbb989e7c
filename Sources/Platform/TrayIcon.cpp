// SPDX-License-Identifier: MIT
#include "Platform/TrayIcon.h"

#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const auto watcher = u"org.kde.StatusNotifierWatcher"_s;
const auto watcherPath = u"/StatusNotifierWatcher"_s;
const auto menuPath = u"/MenuBar"_s;

QDBusMessage callWatcher(const QString &interface, const QString &method) {
    QDBusMessage call = QDBusMessage::createMethodCall(watcher, watcherPath, interface, method);
    call.setAutoStartService(false);
    return call;
}

} // namespace

TrayIcon::TrayIcon(StatusNotifierItem::Draw draw, const QDBusConnection &bus)
    : m_bus(bus)
    , m_item(std::move(draw), menuPath)
    , m_menu({u"Open OrvaneTalk"_s, u"Quit"_s}) {
    connect(&m_item, &StatusNotifierItem::activated, this, &TrayIcon::activated);
    connect(&m_menu, &TrayMenu::chosen, this, [this](int index) {
        if (index == 0)
            Q_EMIT activated();
        else
            Q_EMIT quitChosen();
    });
    m_bus.registerObject(menuPath, &m_menu, QDBusConnection::ExportScriptableContents);
    m_bus.registerObject(u"/StatusNotifierItem"_s, &m_item, QDBusConnection::ExportScriptableContents);
    followWatcher();
    registerItem();
}

void TrayIcon::followWatcher() {
    for (const auto &signal : {u"StatusNotifierHostRegistered"_s, u"StatusNotifierHostUnregistered"_s})
        m_bus.connect(watcher, watcherPath, watcher, signal, this, SLOT(lookForHost()));
    auto *owners = new QDBusServiceWatcher(watcher, m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(owners, &QDBusServiceWatcher::serviceOwnerChanged, this, &TrayIcon::registerItem);
}

void TrayIcon::registerItem() {
    m_registered = false;
    setHosted(false);
    // By the connection's own name: to get another one would mean to wait for the bus.
    ask(callWatcher(watcher, u"RegisterStatusNotifierItem"_s) << m_bus.baseService(),
        [this](const QDBusMessage &answer) {
            m_registered = answer.type() == QDBusMessage::ReplyMessage;
            if (m_registered)
                lookForHost();
        });
}

void TrayIcon::lookForHost() {
    if (!m_registered)
        return;
    ask(callWatcher(u"org.freedesktop.DBus.Properties"_s, u"Get"_s)
            << watcher << u"IsStatusNotifierHostRegistered"_s,
        [this](const QDBusMessage &answer) {
            const auto value = answer.arguments().value(0).value<QDBusVariant>().variant();
            setHosted(value.typeId() == QMetaType::Bool && value.toBool());
        });
}

void TrayIcon::ask(const QDBusMessage &question, std::function<void(const QDBusMessage &answer)> take) {
    auto *pending = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this,
            [this, pending, take = std::move(take), number = ++m_question] {
                pending->deleteLater();
                if (number == m_question)
                    take(pending->reply());
            });
}

void TrayIcon::setHosted(bool hosted) {
    if (std::exchange(m_hosted, hosted) != hosted)
        Q_EMIT hostedChanged();
}

} // namespace orvane
