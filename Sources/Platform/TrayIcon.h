// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/DockBadge.h"
#include "Platform/StatusNotifierItem.h"
#include "Platform/TrayMenu.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <functional>

namespace orvane {

/// The icon in the desktop's tray (StatusNotifierItem), at whatever watcher there is or comes later, with a
/// menu to open the window and to quit. Main thread.
class TrayIcon : public QObject, public DockBadge {
    Q_OBJECT

public:
    explicit TrayIcon(StatusNotifierItem::Draw draw,
                      const QDBusConnection &bus = QDBusConnection::sessionBus());

    /// Whether the icon is in a tray that shows it.
    bool isHosted() const { return m_hosted; }

    void show(qint64 count, const QString &label) override { m_item.show(count, label); }

Q_SIGNALS:
    void hostedChanged();
    void activated();
    void quitChosen();

private Q_SLOTS:
    void lookForHost();

private:
    void followWatcher();
    void registerItem();
    /// Only the answer to the latest question is taken.
    void ask(const QDBusMessage &question, std::function<void(const QDBusMessage &answer)> take);
    void setHosted(bool hosted);

    QDBusConnection m_bus;
    StatusNotifierItem m_item;
    TrayMenu m_menu;
    quint64 m_question = 0;
    bool m_registered = false;
    bool m_hosted = false;
};

} // namespace orvane
