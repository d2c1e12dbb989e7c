// SPDX-License-Identifier: MIT
#include "HomeServer/Events/EventHub.h"

#include "HomeServer/Options.h"

#include <QJsonDocument>
#include <QWebSocket>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

EventHub::EventHub(EventSocket::Authenticate authenticate, const Options &options)
    : m_server(u"home"_s, QWebSocketServer::NonSecureMode)
    , m_authenticate(std::move(authenticate))
    , m_limits{options.authTimeout, options.maxUnsentBytes} {
    connect(&m_server, &QWebSocketServer::newConnection, this, &EventHub::accept);
}

EventHub::~EventHub() {
    stop();
}

bool EventHub::listen(const QHostAddress &address, quint16 port) {
    return m_server.listen(address, port);
}

void EventHub::stop() {
    m_server.close();
    qDeleteAll(std::exchange(m_unknown, {}));
    qDeleteAll(std::exchange(m_sockets, {}));
}

void EventHub::send(qint64 userId, const QJsonObject &event, const QString &exceptDevice) {
    const auto sockets = m_sockets.values(userId);
    if (sockets.isEmpty())
        return;
    const QString frame = QString::fromUtf8(QJsonDocument(event).toJson(QJsonDocument::Compact));
    for (EventSocket *socket : sockets)
        if (exceptDevice.isEmpty() || socket->caller().deviceId != exceptDevice)
            socket->send(frame);
}

bool EventHub::isOnline(qint64 userId) const {
    return m_sockets.contains(userId);
}

void EventHub::close(qint64 userId, const QString &device) {
    for (EventSocket *socket : m_sockets.values(userId))
        if (device.isEmpty() || socket->caller().deviceId == device)
            socket->close();
}

void EventHub::setFrozen(qint64 userId, bool frozen) {
    for (EventSocket *socket : m_sockets.values(userId))
        socket->setFrozen(frozen);
}

void EventHub::accept() {
    while (m_server.hasPendingConnections()) {
        std::unique_ptr<QWebSocket> connection(m_server.nextPendingConnection());
        connection->setParent(nullptr);
        auto *socket = new EventSocket(std::move(connection), m_authenticate, m_limits);
        m_unknown.append(socket);
        connect(socket, &EventSocket::authenticated, this, [this, socket] { authenticated(socket); });
        connect(socket, &EventSocket::closed, this, [this, socket] { remove(socket); });
        connect(socket, &EventSocket::frameReceived, this,
                [this, socket](const QJsonObject &frame) { Q_EMIT frameReceived(socket->caller(), frame); });
    }
}

void EventHub::authenticated(EventSocket *socket) {
    m_unknown.removeOne(socket);
    const qint64 user = socket->caller().userId;
    const bool first = !isOnline(user);
    m_sockets.insert(user, socket);
    if (first)
        Q_EMIT presenceChanged(user, true);
}

void EventHub::remove(EventSocket *socket) {
    socket->deleteLater();
    if (m_unknown.removeOne(socket))
        return;
    const qint64 user = socket->caller().userId;
    if (m_sockets.remove(user, socket) > 0 && !isOnline(user))
        Q_EMIT presenceChanged(user, false);
}

} // namespace orvane::homeserver
