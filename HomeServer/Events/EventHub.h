// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Events/EventSocket.h"

#include "HomeServer/Http/Gate.h"

#include <QHash>
#include <QPointer>
#include <QWebSocketServer>

namespace orvane::homeserver {

struct Options;

// The event port: every open event socket, and who is online by having one.
class EventHub : public QObject {
    Q_OBJECT

public:
    EventHub(EventSocket::Authenticate authenticate, const Options &options);
    ~EventHub() override;

    bool listen(const QHostAddress &address, quint16 port);
    quint16 port() const { return m_gate.serverPort(); }
    QString errorText() const { return m_gate.errorString(); }
    void stop();

    // One text frame to every socket of the user, but none to the device named.
    void send(qint64 userId, const QJsonObject &event, const QString &exceptDevice = {});

    bool isOnline(qint64 userId) const;

    // Ends the sockets of a user, or of one device of theirs.
    void close(qint64 userId, const QString &device = {});

    // For scripted faults.
    void setFrozen(qint64 userId, bool frozen);

Q_SIGNALS:
    // A user's first socket came or the last one went.
    void presenceChanged(qint64 userId, bool online);
    void frameReceived(const orvane::homeserver::Caller &caller, const QJsonObject &frame);

private:
    void greet(QTcpSocket *connection);
    void accept();
    void authenticated(EventSocket *socket);
    void remove(EventSocket *socket);

    Gate m_gate;
    QWebSocketServer m_server;       // only shakes hands
    QList<QTcpSocket *> m_strangers; // before they have shaken hands
    QHash<EventSocket *, QPointer<QTcpSocket>> m_connections;
    EventSocket::Authenticate m_authenticate;
    EventSocket::Limits m_limits;
    QList<EventSocket *> m_unknown; // before their first frame
    QMultiHash<qint64, EventSocket *> m_sockets;
};

} // namespace orvane::homeserver
