// SPDX-License-Identifier: MIT
#pragma once

#include <QList>
#include <QObject>
#include <QStringList>
#include <QWebSocketServer>

#include <memory>
#include <vector>

class QWebSocket;

namespace orvane {

/// A WebSocket server on a free port of loopback that records the text frames of each connection and says
/// what it is told to. Connections are numbered from 0 in the order of their arrival.
class RecordingSocketServer : public QObject {
    Q_OBJECT

public:
    explicit RecordingSocketServer(QObject *parent = nullptr);
    ~RecordingSocketServer() override;

    /// "ws://127.0.0.1:port/ws".
    QString url() const;

    qsizetype connections() const { return qsizetype(m_connections.size()); }
    /// Empty for a connection that has not arrived yet.
    QStringList frames(qsizetype connection) const;
    /// Path and query of the connection's request.
    QString resource(qsizetype connection) const;

    void sendText(qsizetype connection, const QString &frame);
    void sendBinary(qsizetype connection, const QByteArray &frame);
    /// Closes with a close frame.
    void close(qsizetype connection);
    /// Ends the connection without a word.
    void cut(qsizetype connection);

    /// Refuses new connections, then takes them again on the same port.
    void stopListening();
    void listenAgain();

private:
    struct Connection {
        QWebSocket *socket;
        QString resource;
        QStringList frames;
    };

    QWebSocketServer m_server;
    quint16 m_port = 0;
    std::vector<std::unique_ptr<Connection>> m_connections;
};

} // namespace orvane
