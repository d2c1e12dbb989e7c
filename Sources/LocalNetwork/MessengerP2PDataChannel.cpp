// SPDX-License-Identifier: MIT
#include "LocalNetwork/MessengerP2PDataChannel.h"

#include "Base/LogLine.h"
#include "Base/Task.h"
#include "LocalNetwork/LanFrames.h"

#include <QNetworkProxy>
#include <QTcpSocket>
#include <QTimer>

#include <sys/resource.h>

namespace orvane {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace {

// Whoever likes may open connections here and say nothing. They must not take the descriptors that everything
// else in this process needs.
void raiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace

MessengerP2PDataChannel::MessengerP2PDataChannel(MessengerSession &session, quint16 listened, quint16 dialled)
    : m_session(session)
    , m_listened(listened)
    , m_dialled(dialled) {}

MessengerP2PDataChannel &MessengerP2PDataChannel::shared() {
    static auto *channel = new MessengerP2PDataChannel(MessengerSession::shared());
    return *channel;
}

void MessengerP2PDataChannel::start() {
    if (listener)
        return;
    raiseDescriptorLimit();
    auto server = std::make_unique<QTcpServer>();
    server->setProxy(QNetworkProxy::NoProxy);
    if (!server->listen(QHostAddress::Any, m_listened)) {
        logLine(u"P2P listener error: "_s + server->errorString());
        return;
    }
    listener = std::move(server);
    QObject::connect(listener.get(), &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = listener->nextPendingConnection())
            accept(new LanConnection(socket, this));
    });
    // Without descriptors to spare the server stops accepting, and nobody but this tells it to go on.
    QObject::connect(listener.get(), &QTcpServer::acceptError, listener.get(), [server = listener.get()] {
        QTimer::singleShot(1s, server, &QTcpServer::resumeAccepting);
    });
}

void MessengerP2PDataChannel::stop() {
    listener.reset();
    const auto open = connections;
    for (const QPointer<LanConnection> &conn : open)
        if (conn)
            conn->cancel();
    connections.clear();
    connToPeer.clear();
    buffers.clear();
    m_connectedPeerIds.clear();
    Q_EMIT connectedPeerIdsChanged();
}

quint16 MessengerP2PDataChannel::listenedPort() const {
    return listener ? listener->serverPort() : 0;
}

void MessengerP2PDataChannel::accept(LanConnection *conn) {
    QObject::connect(conn, &LanConnection::ended, this, [this, conn] { removeConn(conn); });
    receiveLoop(conn, std::nullopt);
}

void MessengerP2PDataChannel::connect(const QString &peerUserId, const QString &host) {
    if (connections.contains(peerUserId))
        return;
    auto *conn = new LanConnection(new QTcpSocket, this);
    connections.insert(peerUserId, conn);
    QObject::connect(conn, &LanConnection::ready, this, [this, conn, peerUserId] {
        setConnected(peerUserId, true);
        sendHello(peerUserId, conn);
        receiveLoop(conn, peerUserId);
    });
    QObject::connect(conn, &LanConnection::ended, this, [this, conn, peerUserId] {
        drop(peerUserId);
        // The entry stays until the channel stops; its bytes need not.
        if (const auto buffer = buffers.find(conn->identity()); buffer != buffers.end())
            buffer->clear();
    });
    conn->dial(host, m_dialled);
}

bool MessengerP2PDataChannel::send(const QString &peerUserId, const QString &chatId,
                                   const QJsonObject &message) {
    const auto conn = connections.constFind(peerUserId);
    if (conn == connections.constEnd() || !m_connectedPeerIds.contains(peerUserId))
        return false;
    if (*conn)
        (*conn)->send(lan::framed(lan::message(chatId, message)));
    return true;
}

void MessengerP2PDataChannel::sendHello(const QString &peerUserId, LanConnection *conn) {
    conn->send(lan::framed(lan::hello(m_session.userIdText(), m_session.deviceId)));
    connToPeer.insert(conn->identity(), peerUserId);
}

void MessengerP2PDataChannel::drop(const QString &peerUserId) {
    const QPointer<LanConnection> conn = connections.take(peerUserId);
    setConnected(peerUserId, false);
    if (conn)
        conn->cancel();
}

// By the peer's id, whichever connection is registered under it by now.
void MessengerP2PDataChannel::removeConn(const LanConnection *conn) {
    if (const Hint peer = peerOf(conn)) {
        connections.remove(*peer);
        setConnected(*peer, false);
    }
    connToPeer.remove(conn->identity());
    buffers.remove(conn->identity());
}

void MessengerP2PDataChannel::receiveLoop(LanConnection *conn, const Hint &peerUserId) {
    QObject::connect(conn, &LanConnection::received, this,
                     [this, conn, hint = peerUserId](QByteArrayView bytes) mutable {
                         const bool handled = dropped([&] { handleData(bytes, conn, hint); },
                                                      "a frame that memory can't hold is its sender's loss");
                         if (!handled) {
                             buffers.remove(conn->identity());
                             conn->cancel();
                         }
                         if (!hint)
                             hint = peerOf(conn);
                     });
}

void MessengerP2PDataChannel::handleData(QByteArrayView bytes, LanConnection *conn, const Hint &hintPeerId) {
    // Whoever hears of a message may stop the channel, so the buffer stays out of the table meanwhile.
    FrameReader buffer = buffers.take(conn->identity());
    buffer.append(bytes);
    while (conn->isOpen()) {
        const auto frame = buffer.next();
        if (!frame) {
            buffers[conn->identity()] = std::move(buffer);
            return;
        }
        parseFrame(*frame, conn, hintPeerId);
    }
}

void MessengerP2PDataChannel::parseFrame(QByteArrayView frame, LanConnection *conn, const Hint &hintPeerId) {
    const lan::Frame parsed = lan::parseFrame(frame);
    if (const auto *hello = std::get_if<lan::Hello>(&parsed)) {
        // Who has outlived a stop without a name gets none, and so no messages, before the next start.
        if (!listener && !hintPeerId)
            return;
        connToPeer.insert(conn->identity(), hello->userId);
        connections.insert(hello->userId, conn);
        setConnected(hello->userId, true);
    } else if (const auto *message = std::get_if<lan::Message>(&parsed); message && onMessage) {
        const QString peer = hintPeerId ? *hintPeerId : peerOf(conn).value_or(QString());
        onMessage(peer, message->chatId, message->message);
    }
}

void MessengerP2PDataChannel::setConnected(const QString &peerUserId, bool connected) {
    if (connected == m_connectedPeerIds.contains(peerUserId))
        return;
    if (connected)
        m_connectedPeerIds.insert(peerUserId);
    else
        m_connectedPeerIds.remove(peerUserId);
    Q_EMIT connectedPeerIdsChanged();
}

MessengerP2PDataChannel::Hint MessengerP2PDataChannel::peerOf(const LanConnection *conn) const {
    const auto found = connToPeer.constFind(conn->identity());
    return found == connToPeer.constEnd() ? std::nullopt : std::optional(*found);
}

} // namespace orvane
