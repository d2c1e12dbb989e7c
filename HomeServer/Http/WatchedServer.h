// SPDX-License-Identifier: MIT
#pragma once

#include <QPointer>
#include <QSet>
#include <QTcpServer>
#include <QTcpSocket>

namespace orvane::homeserver {

// One client's connection, with the number of bytes that came since the last answer. A request that grows
// beyond its bound is answered with 413 and cut off, before the HTTP layer has to hold it.
class WatchedSocket : public QTcpSocket {
    Q_OBJECT

public:
    explicit WatchedSocket(QObject *parent);

    // A new request may begin.
    void answered() { m_received = 0; }

private:
    void count();
    void cutOff();

    qint64 m_received = 0;
    bool m_upload = false;
};

// The listening side of the REST port; it knows every open connection.
class WatchedServer : public QTcpServer {
    Q_OBJECT

public:
    // What a request of JSON may weigh, and one that carries a file. In bytes, without headers.
    static constexpr qint64 maxBody = qint64{1024} * 1024;
    static constexpr qint64 maxUpload = qint64{32} * 1024 * 1024;

    using QTcpServer::QTcpServer;

    // The open connection from that address and port, or null.
    WatchedSocket *socketFrom(const QHostAddress &address, quint16 port) const;

    void closeAll();

protected:
    void incomingConnection(qintptr descriptor) override;
};

// Whether a request with this path, as it stands in the request line, carries a file.
bool isUploadPath(QByteArrayView path);

} // namespace orvane::homeserver
