// SPDX-License-Identifier: MIT
#include "HomeServer/Http/Connection.h"

#include <QHash>

#include <utility>

namespace orvane::homeserver {

namespace {

constexpr qint64 piece = 256LL * 1024; // read at once
constexpr int idleMilliseconds = 120'000;
constexpr int silenceMilliseconds = 1000; // of a client whose rest is thrown away
constexpr int lingerMilliseconds = 30'000;

QByteArray reasonOf(int status) {
    static const QHash<int, QByteArray> reasons = {
        {200, "OK"},
        {201, "Created"},
        {400, "Bad Request"},
        {401, "Unauthorized"},
        {403, "Forbidden"},
        {404, "Not Found"},
        {405, "Method Not Allowed"},
        {409, "Conflict"},
        {410, "Gone"},
        {411, "Length Required"},
        {413, "Payload Too Large"},
        {429, "Too Many Requests"},
        {431, "Request Header Fields Too Large"},
        {500, "Internal Server Error"},
        {501, "Not Implemented"},
        {503, "Service Unavailable"},
        {507, "Insufficient Storage"},
    };
    return reasons.value(status, "Status");
}

} // namespace

Connection::Connection(QTcpSocket *socket, Admit admit, BodyBudget &budget, int patience, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_admit(std::move(admit))
    , m_budget(budget)
    , m_peer(socket->peerAddress())
    , m_patience(patience) {
    socket->setParent(this);
    socket->setReadBufferSize(piece);
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, socket, &QAbstractSocket::abort);
    connect(socket, &QIODevice::readyRead, this, &Connection::proceed);
    connect(socket, &QAbstractSocket::disconnected, this, &QObject::deleteLater);
    m_deadline.start(m_patience);
}

Connection::~Connection() {
    m_socket->disconnect(this);
    release();
}

void Connection::release() {
    m_budget.giveBack(m_peer, std::exchange(m_taken, 0));
    m_buffer = {};
}

void Connection::proceed() {
    try {
        while ((m_state == State::Head && readHead()) || (m_state == State::Body && readBody())) {
        }
    } catch (const Refusal &refusal) {
        refuse(refusal.answer());
    }
}

// True when there is something more to do.
bool Connection::readHead() {
    if (m_buffer.isEmpty() && m_socket->bytesAvailable() > 0)
        m_deadline.start(m_patience);
    // No byte beyond the head, which may be another request's.
    const QByteArray seen = m_buffer + m_socket->peek(longestHead + 4 - m_buffer.size());
    const qsizetype end = seen.indexOf("\r\n\r\n");
    m_socket->skip((end < 0 ? seen.size() : end + 4) - m_buffer.size());
    m_buffer = end < 0 ? seen : seen.left(end);
    if (end < 0 && m_buffer.size() > longestHead)
        throw Refusal(431, "headers_too_large");
    if (end < 0)
        return false;
    m_head = parseHead(m_buffer);
    m_buffer = {};
    m_bodyless = m_head.request.method == "HEAD";
    try {
        if (m_head.bodyLength > m_admit(m_head))
            throw Refusal(413, "too_large");
    } catch (const Refusal &refusal) {
        if (m_head.bodyLength > 0)
            throw;
        m_state = State::Acting;
        answer(refusal.answer());
        return false;
    }
    if (m_head.expectContinue)
        m_socket->write("HTTP/1.1 100 Continue\r\n\r\n");
    m_state = State::Body;
    m_deadline.start(m_patience);
    return true;
}

bool Connection::readBody() {
    const QByteArray more = m_socket->read(std::min(piece, m_head.bodyLength - m_buffer.size()));
    if (!more.isEmpty()) {
        if (!m_budget.take(m_peer, more.size()))
            throw Refusal(503, "busy");
        m_taken += more.size();
        m_buffer += more;
        m_deadline.start(m_patience);
    }
    if (m_buffer.size() < m_head.bodyLength)
        return m_socket->bytesAvailable() > 0;
    m_state = State::Acting;
    m_deadline.stop();
    m_head.request.body = std::exchange(m_buffer, {});
    Q_EMIT requested(std::exchange(m_head.request, {}));
    return false;
}

void Connection::answer(const Answer &answer) {
    if (m_state != State::Acting)
        return;
    release();
    write(answer, !m_head.keepAlive);
    if (!m_head.keepAlive) {
        m_state = State::Leaving;
        m_socket->disconnectFromHost();
        m_deadline.start(lingerMilliseconds);
        return;
    }
    m_state = State::Head;
    m_deadline.start(idleMilliseconds);
    // The next request may be here already, and then nothing would tell.
    QMetaObject::invokeMethod(this, &Connection::proceed, Qt::QueuedConnection);
}

void Connection::write(const Answer &answer, bool last) {
    m_socket->write("HTTP/1.1 " + QByteArray::number(answer.status) + ' ' + reasonOf(answer.status) +
                    "\r\nContent-Type: " + answer.mimeType + "\r\nContent-Length: " +
                    QByteArray::number(answer.body.size()) + "\r\nX-Content-Type-Options: nosniff" +
                    (last ? "\r\nConnection: close" : "") + "\r\n\r\n");
    if (!m_bodyless)
        m_socket->write(answer.body);
}

void Connection::refuse(const Answer &answer) {
    release();
    m_state = State::Leaving;
    write(answer, true);
    // Closing with unread bytes would reset the connection and take the answer with it.
    m_socket->readAll();
    m_deadline.start(silenceMilliseconds);
    connect(m_socket, &QIODevice::readyRead, this, [this] {
        m_socket->readAll();
        m_deadline.start(silenceMilliseconds);
    });
    QTimer::singleShot(lingerMilliseconds, m_socket, &QAbstractSocket::abort);
}

void Connection::hangUp() {
    // Later, because whoever hands out a request still works on it.
    QMetaObject::invokeMethod(m_socket, &QAbstractSocket::abort, Qt::QueuedConnection);
}

} // namespace orvane::homeserver
