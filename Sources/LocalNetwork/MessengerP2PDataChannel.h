// SPDX-License-Identifier: MIT
#pragma once

#include "LocalNetwork/FrameReader.h"
#include "LocalNetwork/LanConnection.h"
#include "Session/MessengerSession.h"

#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QTcpServer>

#include <functional>
#include <memory>
#include <optional>

namespace orvane {

/// Direct TCP links to clients on the same network: frames of JSON in the clear, for chat messages. A peer is
/// whoever its hello says; nothing is verified. It knows nothing of how peers are found. Main thread.
///
///     dialled --ready--> linked --+--> gone
///     anonymous --hello--> linked +
class MessengerP2PDataChannel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QSet<QString> connectedPeerIds READ connectedPeerIds NOTIFY connectedPeerIdsChanged)

public:
    /// The port of this system on every machine; tests have several clients on one.
    static constexpr quint16 port = 9477;

    explicit MessengerP2PDataChannel(MessengerSession &session, quint16 listened = port,
                                     quint16 dialled = port);

    static MessengerP2PDataChannel &shared();

    /// The peers that a link is up with.
    const QSet<QString> &connectedPeerIds() const { return m_connectedPeerIds; }

    /// Hears of each message: the peer's id, empty where it has not said it, the chat's id, and the record.
    std::function<void(const QString &peerId, const QString &chatId, const QJsonObject &message)> onMessage;

    /// Listens, if it doesn't yet. A failure ends in a log line, and the next start tries again.
    void start();
    /// Closes the listener and all links, and forgets everything. Connections that have not said who they are
    /// stay; their messages are heard, but none of them becomes a link before the next start.
    void stop();
    /// The port that is listened on; 0 while stopped.
    quint16 listenedPort() const;

    /// Dials, unless there is a connection for this peer, be it one that is still on its way.
    void connect(const QString &peerUserId, const QString &host);
    /// True: the bytes are with the connection, which tells nothing of their arrival. False: there is no
    /// link, and the message has to go another way.
    bool send(const QString &peerUserId, const QString &chatId, const QJsonObject &message);

Q_SIGNALS:
    void connectedPeerIdsChanged();

private:
    using Hint = std::optional<QString>;

    void accept(LanConnection *conn);
    void sendHello(const QString &peerUserId, LanConnection *conn);
    void drop(const QString &peerUserId);
    void removeConn(const LanConnection *conn);
    void receiveLoop(LanConnection *conn, const Hint &peerUserId);
    void handleData(QByteArrayView bytes, LanConnection *conn, const Hint &hintPeerId);
    void parseFrame(QByteArrayView frame, LanConnection *conn, const Hint &hintPeerId);
    void setConnected(const QString &peerUserId, bool connected);
    Hint peerOf(const LanConnection *conn) const;

    MessengerSession &m_session;
    quint16 m_listened;
    quint16 m_dialled;
    // Changed in place: a flood of hellos must not copy it each time.
    QSet<QString> m_connectedPeerIds;
    std::unique_ptr<QTcpServer> listener;
    /// By peer. An entry may outlive its connection: what goes is the entry of a connection's last name.
    QHash<QString, QPointer<LanConnection>> connections;
    /// These two by the identity of the connection.
    QHash<quint64, QString> connToPeer;
    QHash<quint64, FrameReader> buffers;
};

} // namespace orvane
