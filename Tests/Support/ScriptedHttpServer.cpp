// SPDX-License-Identifier: MIT
#include "Support/ScriptedHttpServer.h"

#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// Takes one whole request off the front of the bytes; absent while it is still incomplete.
std::optional<RecordedRequest> takeRequest(QByteArray &bytes) {
    const qsizetype headEnd = bytes.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return std::nullopt;
    QList<QByteArray> lines = bytes.left(headEnd).split('\n');
    const QList<QByteArray> requestLine = lines.takeFirst().trimmed().split(' ');
    RecordedRequest request;
    request.method = requestLine.value(0);
    request.target = requestLine.value(1);
    for (const QByteArray &line : std::as_const(lines)) {
        const qsizetype colon = line.indexOf(':');
        request.headers.insert(line.left(colon).trimmed().toLower(), line.mid(colon + 1).trimmed());
    }
    const qsizetype bodySize = request.headers.value("content-length", "0").toLongLong();
    if (bytes.size() < headEnd + 4 + bodySize)
        return std::nullopt;
    request.body = bytes.mid(headEnd + 4, bodySize);
    bytes.remove(0, headEnd + 4 + bodySize);
    return request;
}

void send(QTcpSocket *socket, const ScriptedAnswer &answer) {
    if (answer.bytes)
        socket->write(*answer.bytes);
    if (answer.afterwards == ScriptedAnswer::Afterwards::close)
        socket->disconnectFromHost();
}

QByteArray head(int status, qsizetype bodySize, const QByteArray &extraHeaders) {
    return "HTTP/1.1 " + QByteArray::number(status) +
           " Scripted\r\nContent-Length: " + QByteArray::number(bodySize) + "\r\n" + extraHeaders + "\r\n";
}

} // namespace

ScriptedAnswer ScriptedAnswer::of(int status, const QByteArray &body, const QByteArray &extraHeaders) {
    return {head(status, body.size(), extraHeaders) + body, Afterwards::asAsked, false};
}

ScriptedAnswer ScriptedAnswer::truncated(const QByteArray &body) {
    return {head(200, body.size() + 100, {}) + body, Afterwards::close, false};
}

ScriptedAnswer ScriptedAnswer::heldBack() const {
    ScriptedAnswer answer = *this;
    answer.held = true;
    return answer;
}

ScriptedHttpServer::ScriptedHttpServer(QObject *parent)
    : QObject(parent) {
    connect(&m_server, &QTcpServer::newConnection, this, &ScriptedHttpServer::accept);
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("The test server can't listen: %s", qUtf8Printable(m_server.errorString()));
}

QString ScriptedHttpServer::base() const {
    return u"http://127.0.0.1:%1"_s.arg(port());
}

void ScriptedHttpServer::release() {
    const QList<Held> held = std::exchange(m_held, {});
    for (const Held &one : held) {
        if (one.socket)
            send(one.socket, one.answer);
    }
}

void ScriptedHttpServer::reset() {
    m_requests.clear();
    m_script.clear();
    m_held.clear();
}

void ScriptedHttpServer::accept() {
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            m_incoming.remove(socket);
            socket->deleteLater();
        });
    }
}

void ScriptedHttpServer::read(QTcpSocket *socket) {
    Incoming &incoming = m_incoming[socket];
    incoming.unread += socket->readAll();
    if (m_endsReused && incoming.answered > 0) {
        m_requests.append(RecordedRequest());
        socket->abort();
        return;
    }
    while (auto request = takeRequest(incoming.unread)) {
        ++incoming.answered;
        m_requests.append(*request);
        answer(socket);
    }
}

void ScriptedHttpServer::answer(QTcpSocket *socket) {
    const QByteArray path = m_requests.last().target.split('?').first();
    ScriptedAnswer next =
        m_script.isEmpty() ? m_standing.value(path, ScriptedAnswer::of(200, "{}")) : m_script.takeFirst();
    if (next.afterwards == ScriptedAnswer::Afterwards::asAsked &&
        m_requests.last().headers.value("connection") == "close") {
        next.bytes->insert(next.bytes->indexOf("\r\n") + 2, "Connection: close\r\n");
        next.afterwards = ScriptedAnswer::Afterwards::close;
    }
    if (next.held)
        m_held.append({socket, next});
    else
        send(socket, next);
}

} // namespace orvane
