// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QList>
#include <QTcpServer>
#include <QTcpSocket>

namespace orvane::homeserver {

// Who may be connected to a port at once.
struct GateBounds {
    int perAddress = 256;
    int inAll = 4096;
    QList<QHostAddress> proxies = {}; // addresses that stand for many
};

// A listening port with bounds. Whoever comes when an address, or the whole port, has its fill takes the
// place of the oldest connection that has shown no valid token, and is turned away when there is none.
// Without descriptors it stops accepting for a second.
class Gate : public QTcpServer {
    Q_OBJECT

public:
    explicit Gate(const GateBounds &bounds, QObject *parent = nullptr);

    // The connection has shown a valid token.
    void trust(const QTcpSocket *socket);

    void closeAll();

Q_SIGNALS:
    // The receiver owns the socket.
    void arrived(QTcpSocket *socket);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    struct Guest {
        QTcpSocket *socket = nullptr;
        QHostAddress address;
        bool trusted = false;
    };

    bool makeRoom(const QHostAddress &address);
    bool dropOldest(const QHostAddress *address);
    void forget(const QTcpSocket *socket);

    GateBounds m_bounds;
    QList<Guest> m_guests; // the oldest first
    QHash<QHostAddress, int> m_byAddress;
};

} // namespace orvane::homeserver
