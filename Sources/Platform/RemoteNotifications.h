// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

namespace orvane {

/// The platform's remote push. Main thread; the answers come later, by signal.
class RemoteNotifications : public QObject {
    Q_OBJECT

public:
    /// May be called again, and then answers again.
    virtual void registerForRemoteNotifications() = 0;

Q_SIGNALS:
    void registered(const QByteArray &deviceToken);
    void failed(const QString &description);
    void received(const QByteArray &payload);
};

} // namespace orvane
