// SPDX-License-Identifier: MIT
#include "Server/MessengerWebSocket.h"

#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Server/EventNames.h"
#include "Session/OrvaneTalkEndpoint.h"

#include <QElapsedTimer>
#include <QUrl>
#include <QWebSocket>

#include <deque>

using namespace Qt::StringLiterals;

namespace orvane {

using namespace std::chrono_literals;

namespace {

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
constexpr auto socketError = &QWebSocket::errorOccurred;
#else
constexpr auto socketError = qOverload<QAbstractSocket::SocketError>(&QWebSocket::error);
#endif

// Half of a frame at 60 Hz, and what a window needs to get its turn.
constexpr auto longestTurn = 8ms;
constexpr auto pause = 1ms;
constexpr qint64 slowBuffer = 65'536;

} // namespace

/// What a socket tells.
struct MessengerWebSocket::Report {
    enum Kind { text, binary, end } kind;
    QString frame;
};

/// One socket, with the frames that wait for its handshake and what has come and is not handed on yet.
struct MessengerWebSocket::Connection : QObject {
    explicit Connection(MessengerWebSocket *parent)
        : QObject(parent)
        , owner(parent) {
        // A message cut into frames is cut at any byte, and its reader refuses half a character.
        socket.setOutgoingFrameSize(QWebSocket::maxOutgoingFrameSize());
        socket.setMaxAllowedIncomingFrameSize(parent->m_messageLimit);
        socket.setMaxAllowedIncomingMessageSize(parent->m_messageLimit);
        socket.setReadBufferSize(wholeFrame());
        next.setSingleShot(true);
        QObject::connect(&next, &QTimer::timeout, this, &Connection::handOn);
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

    void arrived(Report::Kind kind, const QString &frame = {}) {
        inbox.push_back({kind, frame});
        if (inbox.size() == 1)
            QMetaObject::invokeMethod(this, &Connection::handOn, Qt::QueuedConnection);
    }

    /// Reports for one turn; what is left then waits while the window paints.
    void handOn() {
        QElapsedTimer turn;
        turn.start();
        while (!inbox.empty()) {
            const Report report = std::move(inbox.front());
            inbox.pop_front();
            owner->reported(*this, report);
            if (!inbox.empty() && turn.hasExpired(longestTurn.count())) {
                // While there is this much to do, the server may wait.
                socket.setReadBufferSize(slowBuffer);
                next.start(pause);
                return;
            }
        }
        socket.setReadBufferSize(wholeFrame());
    }

    /// A frame is taken out of the buffer once all of it is there.
    qint64 wholeFrame() const { return qint64(socket.maxAllowedIncomingFrameSize()) + slowBuffer; }

    /// Nothing more of this connection is of interest.
    void abandon() {
        inbox.clear();
        socket.disconnect(this);
        if (socket.state() == QAbstractSocket::UnconnectedState)
            deleteLater();
        else
            QObject::connect(&socket, &QWebSocket::disconnected, this, &QObject::deleteLater);
    }

    MessengerWebSocket *owner;
    QStringList waiting;
    std::deque<Report> inbox;
    QTimer next;
    bool ended = false;
    // The first to go: it reports even then.
    QWebSocket socket;
};

MessengerWebSocket::MessengerWebSocket(const QString &url, Timing timing, quint64 messageLimit,
                                       QObject *parent)
    : QObject(parent)
    , m_url(url)
    , m_timing(timing)
    , m_messageLimit(messageLimit) {
    QObject::connect(&timer, &QTimer::timeout, this, [this] { send({{u"type"_s, eventname::ping}}); });
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
    send({{u"type"_s, eventname::auth}, {u"token"_s, token}});
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
    QObject::connect(&self->socket, &QWebSocket::connected, self, &Connection::flush);
    QObject::connect(&self->socket, &QWebSocket::textMessageReceived, self,
                     [self](const QString &text) { self->arrived(Report::text, text); });
    QObject::connect(&self->socket, &QWebSocket::binaryMessageReceived, self,
                     [self] { self->arrived(Report::binary); });
    // A server that refuses the handshake may leave its connection open.
    QObject::connect(&self->socket, socketError, &self->socket, &QWebSocket::abort, Qt::QueuedConnection);
    // Every failure ends here, that of the handshake too.
    QObject::connect(&self->socket, &QWebSocket::disconnected, self, [self] { self->arrived(Report::end); });
}

void MessengerWebSocket::reported(Connection &connection, const Report &report) {
    // A replaced connection still reports the one thing that was being waited for, and nothing after it.
    if (&connection != ws)
        connection.abandon();
    if (report.kind == Report::end) {
        connection.ended = true;
        failed();
    } else {
        received(report.kind == Report::text ? &report.frame : nullptr);
    }
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
    logLine(u"🔌 Reconnecting WebSocket..."_s);
    connect(*currentToken);
}

} // namespace orvane
