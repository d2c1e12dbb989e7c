// SPDX-License-Identifier: MIT
#include "HomeServer/Http/WatchedServer.h"

#include <QTimer>

namespace orvane::homeserver {

namespace {

constexpr qint64 headerAllowance = 64LL * 1024;
constexpr qint64 requestLinePeek = 1024;
constexpr int silenceMilliseconds = 1000;
constexpr int lingerMilliseconds = 30'000;

} // namespace

bool isUploadPath(QByteArrayView path) {
    return path.endsWith("/voice-messages") || path.endsWith("/files/upload") ||
           path.endsWith("/voice/transcribe");
}

WatchedSocket::WatchedSocket(QObject *parent)
    : QTcpSocket(parent) {
    // Connected before the HTTP layer's own slot, so it sees the bytes first.
    connect(this, &QIODevice::readyRead, this, &WatchedSocket::count);
}

void WatchedSocket::count() {
    if (m_received == 0) {
        const QByteArray start = peek(requestLinePeek);
        const QByteArray line = start.left(start.indexOf('\r'));
        m_upload = isUploadPath(line.left(line.lastIndexOf(' ')));
    }
    m_received += bytesAvailable();
    if (m_received > headerAllowance + (m_upload ? WatchedServer::maxUpload : WatchedServer::maxBody))
        cutOff();
}

void WatchedSocket::cutOff() {
    disconnect(this, &QIODevice::readyRead, nullptr, nullptr);
    if (isTransactionStarted())
        commitTransaction();
    static const QByteArray body = R"({"error_code":"too_large"})";
    write("HTTP/1.1 413 Payload Too Large\r\nConnection: close\r\nContent-Type: application/json\r\n"
          "Content-Length: " +
          QByteArray::number(body.size()) + "\r\n\r\n" + body);
    // Closing with unread bytes would reset the connection and take the answer with it.
    readAll();
    auto *silence = new QTimer(this);
    connect(silence, &QTimer::timeout, this, &QAbstractSocket::abort);
    connect(this, &QIODevice::readyRead, silence, [this, silence] {
        readAll();
        silence->start();
    });
    silence->start(silenceMilliseconds);
    QTimer::singleShot(lingerMilliseconds, this, &QAbstractSocket::abort);
}

void WatchedServer::incomingConnection(qintptr descriptor) {
    auto *socket = new WatchedSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
        delete socket;
        return;
    }
    addPendingConnection(socket);
}

WatchedSocket *WatchedServer::socketFrom(const QHostAddress &address, quint16 port) const {
    for (WatchedSocket *socket : findChildren<WatchedSocket *>(Qt::FindDirectChildrenOnly))
        if (socket->peerPort() == port && socket->peerAddress() == address)
            return socket;
    return nullptr;
}

void WatchedServer::closeAll() {
    for (WatchedSocket *socket : findChildren<WatchedSocket *>(Qt::FindDirectChildrenOnly))
        socket->abort();
}

} // namespace orvane::homeserver
