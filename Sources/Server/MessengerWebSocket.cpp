#include "Server/MessengerWebSocket.h"

#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Session/OrvaneTalkEndpoint.h"

#include <QUrl>
#include <QWebSocket>

namespace orvane {

namespace {

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
constexpr auto socketError = &QWebSocket::errorOccurred;
#else
constexpr auto socketError = qOverload<QAbstractSocket::SocketError>(&QWebSocket::error);
#endif

} // namespace

/// One socket, with the frames that wait for its handshake.
struct MessengerWebSocket::Connection : QObject {
    explicit Connection(QObject *parent)
        : QObject(parent) {
        // A message cut into frames is cut at any byte, and its reader refuses half a character.
        socket.setOutgoingFrameSize(QWebSocket::maxOutgoingFrameSize());
    }

    void send(const QString &frame) {
        if (socket.state() == QAbstractSocket::ConnectedState)
            socket.sendTextMessage(frame);
        else if (!ended)
            waiting.append(frame);
    }

    void flush() {
        for (const QString &frame : std::as_const(waiting))
            socket.sendTextMessage(frame);
        waiting.clear();
    }

    QWebSocket socket;
    QStringList waiting;
    bool ended = false;
};

MessengerWebSocket::MessengerWebSocket(const QString &url, Timing timing, QObject *parent)
    : QObject(parent)
    , m_url(url)
    , m_timing(timing) {
    QObject::connect(&timer, &QTimer::timeout, this, [this] {
        send({{QStringLiteral("type"), QStringLiteral("ping")}});
    });
    reconnectTimer.setSingleShot(true);
    QObject::connect(&reconnectTimer, &QTimer::timeout, this, &MessengerWebSocket::reconnect);
}

MessengerWebSocket::~MessengerWebSocket() {
    // Closing sockets report to this object, which is half gone when its children go.
    for (QObject *connection : children())
        static_cast<Connection *>(connection)->socket.disconnect();
}

MessengerWebSocket &MessengerWebSocket::shared() {
    static auto *socket = new MessengerWebSocket(OrvaneTalkEndpoint::webSocketURL(), Timing{});
    return *socket;
}

void MessengerWebSocket::connect(const QString &token) {
    currentToken = token;
    const QUrl url(m_url, QUrl::StrictMode);
    if (!url.isValid())
        return;
    if (ws && ws->ended)
        ws->deleteLater();
    ws = new Connection(this);
    follow(*ws);
    // The first frame is the whole handshake: the token stands in no URL and no header.
    send({{QStringLiteral("type"), QStringLiteral("auth")}, {QStringLiteral("token"), token}});
    ws->socket.open(url);
    QTimer::singleShot(m_timing.handshakeTimeout, &ws->socket, [socket = &ws->socket] {
        if (socket->state() == QAbstractSocket::ConnectingState)
            socket->abort();
    });
    timer.start(m_timing.pingInterval);
}

void MessengerWebSocket::send(const QJsonObject &map) {
    if (ws)
        ws->send(QString::fromUtf8(json::compact(map)));
}

void MessengerWebSocket::follow(Connection &connection) {
    Connection *self = &connection;
    // A replaced connection still reports the one thing that was being waited for, and nothing after it.
    const auto detachIfReplaced = [this, self] {
        if (self != ws)
            self->socket.disconnect(this);
    };
    QObject::connect(&self->socket, &QWebSocket::connected, self, &Connection::flush);
    QObject::connect(&self->socket, &QWebSocket::textMessageReceived, this,
                     [this, detachIfReplaced](const QString &text) {
                         detachIfReplaced();
                         received(&text);
                     });
    QObject::connect(&self->socket, &QWebSocket::binaryMessageReceived, this, [this, detachIfReplaced] {
        detachIfReplaced();
        received(nullptr);
    });
    // A server that refuses the handshake may leave its connection open.
    QObject::connect(&self->socket, socketError, &self->socket, &QWebSocket::abort, Qt::QueuedConnection);
    // Every failure ends here, that of the handshake too.
    QObject::connect(&self->socket, &QWebSocket::disconnected, this, [this, self, detachIfReplaced] {
        self->ended = true;
        detachIfReplaced();
        failed();
    });
    QObject::connect(&self->socket, &QWebSocket::disconnected, self, [this, self] {
        if (self != ws)
            self->deleteLater();
    });
}

void MessengerWebSocket::received(const QString *text) {
    isConnected = true;
    reconnectTimer.stop();
    if (const auto event = text ? WSEvent::fromFrame(*text) : std::nullopt)
        Q_EMIT events(*event);
}

void MessengerWebSocket::failed() {
    isConnected = false;
    scheduleReconnect();
}

void MessengerWebSocket::scheduleReconnect() {
    reconnectTimer.start(m_timing.reconnectDelay);
}

void MessengerWebSocket::reconnect() {
    if (!currentToken)
        return;
    logLine(QStringLiteral("🔌 Reconnecting WebSocket..."));
    connect(*currentToken);
}

} // namespace orvane
