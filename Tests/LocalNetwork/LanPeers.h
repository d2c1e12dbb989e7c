// SPDX-License-Identifier: MIT
#pragma once

#include "LocalNetwork/LanFrames.h"
#include "LocalNetwork/MessengerP2PDataChannel.h"
#include "Platform/NetworkInterfaces.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

namespace orvane {

/// A machine whose addresses are what a test says.
struct FixedInterfaces : NetworkInterfaces {
    QList<InterfaceAddress> addresses;
    QList<InterfaceAddress> ipv4Addresses() const override { return addresses; }
};

/// A body in a frame, byte by byte as on the wire.
inline QByteArray wire(const QByteArray &body) {
    return QByteArray::fromHex(QByteArray::number(body.size(), 16).rightJustified(8, '0')) + body;
}

inline QByteArray helloWire(const QByteArray &id) {
    return wire(R"({"type":"hello","user_id":")" + id + R"(","device_id":"d"})");
}

inline QByteArray messageWire(const QByteArray &chat) {
    return wire(R"({"type":"message","chat_id":")" + chat + R"(","message":{"id":"m"}})");
}

/// The other end of a link, without any of this system's code: it says bytes and keeps what it hears.
struct RawPeer {
    explicit RawPeer(quint16 port) {
        socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
        if (!socket.waitForConnected())
            qFatal("no connection: %s", qPrintable(socket.errorString()));
    }
    RawPeer(quint16 port, const QByteArray &id)
        : RawPeer(port) {
        say(helloWire(id));
    }

    void say(const QByteArray &bytes) {
        socket.write(bytes);
        socket.flush();
    }
    bool isOpen() const { return socket.state() == QAbstractSocket::ConnectedState; }

    QTcpSocket socket;
};

/// What came out of a channel: "peer|chat" for each message.
struct Heard : QStringList {
    explicit Heard(MessengerP2PDataChannel &channel) {
        channel.onMessage = [this](const QString &peer, const QString &chat, const QJsonObject &) {
            append(peer + u'|' + chat);
        };
    }
};

} // namespace orvane
