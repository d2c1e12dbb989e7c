// SPDX-License-Identifier: MIT
#include "HomeServer/Events/EventHub.h"

#include "HomeServer/Options.h"

#include <QJsonDocument>
#include <QWebSocket>

#include <algorithm>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

// More than the longest frame, so that a whole one can wait.
constexpr qint64 readBuffer = 512LL * 1024;

} // namespace

EventHub::EventHub(EventSocket::Authenticate authenticate, const Options &options)
    : m_gate(options.connections)
    , m_server(u"home"_s, QWebSocketServer::NonSecureMode)
    , m_authenticate(std::move(authenticate))
    , m_limits{options.authTimeout, options.maxUnsentBytes} {
    m_server.setMaxPendingConnections(options.connections.inAll);
    connect(&m_gate, &Gate::arrived, this, &EventHub::greet);
    connect(&m_server, &QWebSocketServer::newConnection, this, &EventHub::accept);
}

EventHub::~EventHub() {
    stop();
}

bool EventHub::listen(const QHostAddress &address, quint16 port) {
    return m_gate.listen(address, port);
}

void EventHub::stop() {
    m_gate.close();
    m_server.close();
    for (QTcpSocket *stranger : std::exchange(m_strangers, {}))
        stranger->deleteLater();
    m_connections.clear();
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

// Whoever doesn't ask to be let in is given as long as for the first frame.
void EventHub::greet(QTcpSocket *connection) {
    connection->setReadBufferSize(readBuffer);
    m_strangers.append(connection);
    connect(connection, &QAbstractSocket::disconnected, this, [this, connection] {
        if (m_strangers.removeOne(connection))
            connection->deleteLater();
    });
    QTimer::singleShot(m_limits.authTimeout, connection, [this, connection] {
        if (m_strangers.contains(connection))
            connection->abort();
    });
    m_server.handleConnection(connection);
}

void EventHub::accept() {
    while (m_server.hasPendingConnections()) {
        std::unique_ptr<QWebSocket> connection(m_server.nextPendingConnection());
        connection->setParent(nullptr);
        const auto stranger = std::ranges::find_if(m_strangers, [&](const QTcpSocket *other) {
            return other->peerPort() == connection->peerPort() &&
                   other->peerAddress() == connection->peerAddress();
        });
        auto *socket = new EventSocket(std::move(connection), m_authenticate, m_limits);
        m_unknown.append(socket);
        if (stranger != m_strangers.end()) {
            m_connections.insert(socket, *stranger);
            m_strangers.erase(stranger);
        }
        connect(socket, &EventSocket::authenticated, this, [this, socket] { authenticated(socket); });
        connect(socket, &EventSocket::closed, this, [this, socket] { remove(socket); });
        connect(socket, &EventSocket::frameReceived, this,
                [this, socket](const QJsonObject &frame) { Q_EMIT frameReceived(socket->caller(), frame); });
    }
}

void EventHub::authenticated(EventSocket *socket) {
    m_unknown.removeOne(socket);
    m_gate.trust(m_connections.value(socket));
    const qint64 user = socket->caller().userId;
    const bool first = !isOnline(user);
    m_sockets.insert(user, socket);
    if (first)
        Q_EMIT presenceChanged(user, true);
}

void EventHub::remove(EventSocket *socket) {
    socket->deleteLater();
    m_connections.remove(socket);
    if (m_unknown.removeOne(socket))
        return;
    const qint64 user = socket->caller().userId;
    if (m_sockets.remove(user, socket) > 0 && !isOnline(user))
        Q_EMIT presenceChanged(user, false);
}

} // namespace orvane::homeserver
