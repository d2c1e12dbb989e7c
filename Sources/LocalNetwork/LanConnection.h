// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArrayView>
#include <QObject>

class QTcpSocket;

namespace orvane {

/// One TCP connection of the local network, dialled or accepted. It frees itself once it has ended, by the
/// event loop. Main thread.
///
///     dialling --ready--> open --ended--> gone
///        +----------------ended------------^
class LanConnection : public QObject {
    Q_OBJECT

public:
    /// Owns the socket from now on.
    LanConnection(QTcpSocket *socket, QObject *parent);
    ~LanConnection() override;

    /// Of this connection alone, as long as the process lives.
    quint64 identity() const { return m_identity; }

    /// Until it has ended.
    bool isOpen() const { return m_isOpen; }

    void dial(const QString &host, quint16 port);
    /// Bytes that can't be delivered are lost without a word. What the other side doesn't read piles up here.
    void send(const QByteArray &bytes);
    /// Ends it at once; `ended` has been told when the call returns.
    void cancel();

Q_SIGNALS:
    /// The connection that was dialled is there.
    void ready();
    /// At most 64 KiB, in order.
    void received(QByteArrayView bytes);
    /// It failed, the other side closed it, or it was cancelled. Once, and the last that is heard.
    void ended();

private:
    void read();
    void end();

    QTcpSocket *m_socket;
    quint64 m_identity;
    bool m_isOpen = true;
};

} // namespace orvane
