// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Server/WSEvent.h"

#include <QJsonObject>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>
#include <optional>

class QWebSocket;

namespace orvane {

/// The connection to the server's event stream (RFC 6455, JSON text frames). It authenticates with its first
/// frame, pings, and after a failure connects again after a fixed delay for as long as the process lives.
/// Frames that are no JSON object with a text `type` are dropped, and so is "pong". A message that goes over
/// the limit, in one frame or in several, is a failure as soon as that shows. Main thread.
///
///     idle --connect--> waiting --frame--> connected
///                          |                  |
///                          +----failure-------+--> failed --delay--> waiting
class MessengerWebSocket : public QObject {
    Q_OBJECT

    /// True once a frame has arrived since the last failure.
    OBSERVABLE(bool, isConnected)

public:
    struct Timing {
        std::chrono::milliseconds pingInterval{30'000};
        std::chrono::milliseconds reconnectDelay{5'000};
        /// How long a server may take to accept the connection.
        std::chrono::milliseconds handshakeTimeout{60'000};
    };

    /// In bytes. No event comes near it.
    static constexpr quint64 largestMessage = 16ULL * 1024 * 1024;

    MessengerWebSocket(const QString &url, Timing timing, quint64 messageLimit = largestMessage,
                       QObject *parent = nullptr);
    ~MessengerWebSocket() override;

    static MessengerWebSocket &shared();

    /// Opens a new connection and leaves the one before to end by itself. A URL that can't be read does
    /// nothing.
    void connect(const QString &token);

    /// Sends the map as one text frame, after the handshake if that is still going on. Dropped without a
    /// connection.
    void send(const QJsonObject &map);

Q_SIGNALS:
    /// Every event from now on, in order, synchronously. A server that sends faster than events are handled
    /// is slowed down, and does not keep the window from painting.
    void events(const orvane::WSEvent &event);

private:
    struct Report;
    struct Connection;

    void follow(Connection &connection);
    void reported(Connection &connection, const Report &report);
    void received(const QString *text);
    void failed();
    void scheduleReconnect();
    void reconnect();

    QString m_url;
    Timing m_timing;
    quint64 m_messageLimit;
    /// The current connection; the ones before stay children of this object until they end.
    Connection *ws = nullptr;
    QTimer timer;
    QTimer reconnectTimer;
    std::optional<QString> currentToken;
};

} // namespace orvane
