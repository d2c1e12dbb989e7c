// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Operations/Call.h"

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>

class QWebSocket;

namespace orvane::homeserver {

// One connection of the event port, from before its first frame to its end. It closes itself when the first
// frame is no valid `auth` or does not come in time, and when its reader lets more than the allowed number
// of bytes pile up.
class EventSocket : public QObject {
    Q_OBJECT

public:
    using Authenticate = std::function<std::optional<Caller>(const QByteArray &token)>;

    struct Limits {
        int authTimeout = 0; // ms
        qint64 maxUnsentBytes = 0;
    };

    EventSocket(std::unique_ptr<QWebSocket> socket, Authenticate authenticate, Limits limits);
    ~EventSocket() override;

    // A default one until the socket is authenticated.
    const Caller &caller() const { return m_caller; }

    void send(const QString &frame);
    void close();

    // A frozen socket stays open, sends nothing and hears nothing; both are made up for when it thaws.
    void setFrozen(bool frozen);

Q_SIGNALS:
    void authenticated();
    void frameReceived(const QJsonObject &frame);
    void closed();

private:
    void receive(const QString &text);
    void handle(const QString &text);
    void authenticate(const QJsonObject &frame);

    std::unique_ptr<QWebSocket> m_socket;
    Authenticate m_authenticate;
    Limits m_limits;
    Caller m_caller;
    QTimer m_authTimer;
    bool m_frozen = false;
    bool m_closing = false;
    QStringList m_heldOut;
    QStringList m_heldIn;
    qint64 m_heldBytes = 0;
};

} // namespace orvane::homeserver
