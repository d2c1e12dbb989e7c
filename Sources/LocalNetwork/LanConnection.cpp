// SPDX-License-Identifier: MIT
#include "LocalNetwork/LanConnection.h"

#include <QNetworkProxy>
#include <QTcpSocket>

#include <array>
#include <utility>

namespace orvane {

namespace {

constexpr qint64 largestRead = 0x10000;
// Then everything else has its turn.
constexpr int readsAtOnce = 16;

quint64 nextIdentity() {
    static quint64 last = 0;
    return ++last;
}

} // namespace

LanConnection::LanConnection(QTcpSocket *socket, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_identity(nextIdentity()) {
    socket->setParent(this);
    // A neighbour is never behind a proxy. And who sends faster than is read here has to wait.
    socket->setProxy(QNetworkProxy::NoProxy);
    socket->setReadBufferSize(largestRead);
    connect(socket, &QTcpSocket::connected, this, &LanConnection::ready);
    connect(socket, &QTcpSocket::readyRead, this, &LanConnection::read);
    connect(socket, &QTcpSocket::errorOccurred, this, &LanConnection::end);
    connect(socket, &QTcpSocket::disconnected, this, &LanConnection::end);
}

LanConnection::~LanConnection() {
    m_socket->disconnect(this);
}

void LanConnection::dial(const QString &host, quint16 port) {
    m_socket->connectToHost(host, port);
}

void LanConnection::send(const QByteArray &bytes) {
    if (m_isOpen)
        m_socket->write(bytes);
}

void LanConnection::cancel() {
    m_socket->flush();
    end();
}

void LanConnection::read() {
    std::array<char, largestRead> bytes; // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
    for (int read = 0; read < readsAtOnce && m_isOpen; ++read) {
        const qint64 size = m_socket->read(bytes.data(), largestRead);
        if (size < 0)
            end();
        if (size <= 0)
            return;
        Q_EMIT received(QByteArrayView(bytes.data(), size));
    }
}

void LanConnection::end() {
    if (!std::exchange(m_isOpen, false))
        return;
    m_socket->disconnect(this);
    m_socket->abort();
    deleteLater();
    Q_EMIT ended();
}

} // namespace orvane
