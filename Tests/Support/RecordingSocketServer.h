// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QStringList>
#include <QWebSocket>
#include <QWebSocketServer>

#include <memory>
#include <vector>

namespace orvane {

/// A WebSocket server on a free port of loopback that records the text frames of each connection and says
/// what it is told to. Connections are numbered from 0 in the order of their arrival.
class RecordingSocketServer : public QObject {
public:
    RecordingSocketServer() {
        connect(&m_server, &QWebSocketServer::newConnection, this, &RecordingSocketServer::accept);
        listenAgain();
        m_port = m_server.serverPort();
    }
    ~RecordingSocketServer() override {
        for (const auto &connection : m_connections)
            delete connection->socket;
    }

    /// "ws://127.0.0.1:port/ws".
    QString url() const { return QStringLiteral("ws://127.0.0.1:%1/ws").arg(m_port); }

    qsizetype connections() const { return qsizetype(m_connections.size()); }
    /// Empty for a connection that has not arrived yet.
    QStringList frames(qsizetype connection) const {
        return connection < connections() ? at(connection).frames : QStringList();
    }
    /// Path and query of the connection's request.
    QString resource(qsizetype connection) const { return at(connection).resource; }

    void sendText(qsizetype connection, const QString &frame) {
        at(connection).socket->sendTextMessage(frame);
    }
    void sendBinary(qsizetype connection, const QByteArray &frame) {
        at(connection).socket->sendBinaryMessage(frame);
    }
    /// Closes with a close frame.
    void close(qsizetype connection) { at(connection).socket->close(); }
    /// Ends the connection without a word.
    void cut(qsizetype connection) { at(connection).socket->abort(); }

    /// Refuses new connections, then takes them again on the same port.
    void stopListening() { m_server.close(); }
    void listenAgain() {
        if (!m_server.listen(QHostAddress::LocalHost, m_port))
            qFatal("The test server can't listen: %s", qUtf8Printable(m_server.errorString()));
    }

private:
    struct Connection {
        QWebSocket *socket;
        QString resource;
        QStringList frames;
    };
    const Connection &at(qsizetype connection) const { return *m_connections.at(size_t(connection)); }

    void accept() {
        while (QWebSocket *socket = m_server.nextPendingConnection()) {
            socket->setOutgoingFrameSize(QWebSocket::maxOutgoingFrameSize());
            const QString resource = socket->requestUrl().toString(
                QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::FullyEncoded);
            auto *record = m_connections.emplace_back(new Connection{socket, resource, {}}).get();
            connect(socket, &QWebSocket::textMessageReceived, this,
                    [record](const QString &frame) { record->frames.append(frame); });
        }
    }

    QWebSocketServer m_server{"recording", QWebSocketServer::NonSecureMode};
    quint16 m_port = 0;
    std::vector<std::unique_ptr<Connection>> m_connections;
};

} // namespace orvane
