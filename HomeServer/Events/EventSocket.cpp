// SPDX-License-Identifier: MIT
#include "HomeServer/Events/EventSocket.h"

#include <QJsonDocument>
#include <QWebSocket>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr quint64 maxFrameBytes = 256ULL * 1024;
constexpr int closeTimeout = 1000; // ms

QJsonObject objectOf(const QString &text) {
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

} // namespace

EventSocket::EventSocket(std::unique_ptr<QWebSocket> socket, Authenticate authenticate, Limits limits)
    : m_socket(std::move(socket))
    , m_authenticate(std::move(authenticate))
    , m_limits(limits) {
    // A message cut into frames is cut at any byte, and its reader refuses half a character.
    m_socket->setOutgoingFrameSize(QWebSocket::maxOutgoingFrameSize());
    m_socket->setMaxAllowedIncomingFrameSize(maxFrameBytes);
    m_socket->setMaxAllowedIncomingMessageSize(maxFrameBytes);
    connect(m_socket.get(), &QWebSocket::textMessageReceived, this, &EventSocket::receive);
    connect(m_socket.get(), &QWebSocket::binaryMessageReceived, this, [this] {
        if (m_caller.userId == 0)
            close();
    });
    connect(m_socket.get(), &QWebSocket::disconnected, this, &EventSocket::closed);
    m_authTimer.setSingleShot(true);
    connect(&m_authTimer, &QTimer::timeout, this, &EventSocket::close);
    m_authTimer.start(m_limits.authTimeout);
}

EventSocket::~EventSocket() {
    m_socket->disconnect(this);
}

void EventSocket::send(const QString &frame) {
    if (m_closing)
        return;
    if (m_frozen) {
        m_heldOut.append(frame);
        m_heldBytes += frame.size();
    } else {
        m_socket->sendTextMessage(frame);
    }
    if (m_socket->bytesToWrite() + m_heldBytes > m_limits.maxUnsentBytes)
        m_socket->abort();
}

void EventSocket::close() {
    m_closing = true;
    m_socket->close(QWebSocketProtocol::CloseCodePolicyViolated);
    // The peer may never answer the closing frame.
    QTimer::singleShot(closeTimeout, m_socket.get(), &QWebSocket::abort);
}

void EventSocket::setFrozen(bool frozen) {
    m_frozen = frozen;
    if (frozen)
        return;
    m_heldBytes = 0;
    for (const QString &frame : std::exchange(m_heldOut, {}))
        send(frame);
    for (const QString &frame : std::exchange(m_heldIn, {}))
        handle(frame);
}

void EventSocket::receive(const QString &text) {
    if (m_closing)
        return;
    if (!m_frozen) {
        handle(text);
        return;
    }
    m_heldIn.append(text);
    m_heldBytes += text.size();
    if (m_heldBytes > m_limits.maxUnsentBytes)
        m_socket->abort();
}

void EventSocket::handle(const QString &text) {
    const QJsonObject frame = objectOf(text);
    if (m_caller.userId == 0) {
        authenticate(frame);
        return;
    }
    if (frame.value("type"_L1) == "ping"_L1)
        send(uR"({"type":"pong"})"_s);
    else
        Q_EMIT frameReceived(frame);
}

void EventSocket::authenticate(const QJsonObject &frame) {
    const auto caller = frame.value("type"_L1) == "auth"_L1
                            ? m_authenticate(frame.value("token"_L1).toString().toUtf8())
                            : std::nullopt;
    if (!caller) {
        close();
        return;
    }
    m_authTimer.stop();
    m_caller = *caller;
    Q_EMIT authenticated();
}

} // namespace orvane::homeserver
