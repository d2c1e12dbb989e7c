// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QMap>
#include <QObject>

namespace orvane {

/// Whether the person asked the desktop for less motion, as the settings of the desktop portal say:
/// `reduced-motion` of freedesktop.org, switched-off animations of GNOME, a factor of 0 in Plasma. False
/// until the desktop answers, and where there is no portal. Main thread.
class ReducedMotion : public QObject {
    Q_OBJECT

public:
    explicit ReducedMotion(const QDBusConnection &bus = QDBusConnection::sessionBus());

    bool isWanted() const;

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    QDBusConnection m_bus;
    /// Those that ask for less, by their names.
    QMap<QString, bool> m_asked;
};

} // namespace orvane
