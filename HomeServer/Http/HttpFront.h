// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Http/Message.h"

#include <QAbstractHttpServer>
#include <QHttpServerResponder>

#include <functional>
#include <memory>

namespace orvane::homeserver {

class FaultScript;
class WatchedServer;
class WatchedSocket;

// The REST port: turns what arrives into a Request, hands it on, and writes the answer when it comes, at
// once or later. Faults of the script happen here, outside everything that acts.
class HttpFront : public QAbstractHttpServer {
    Q_OBJECT

public:
    using Finish = std::function<void(const Answer &)>;
    // Calls `finish` exactly once, on this thread.
    using Handler = std::function<void(const Request &, const Finish &)>;

    HttpFront(Handler handler, FaultScript &faults);

    // False when the port is taken or the address not ours.
    bool listen(const QHostAddress &address, quint16 port);
    quint16 port() const;
    QString errorText() const;
    void close();

protected:
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    bool handleRequest(const QHttpServerRequest &request, QHttpServerResponder &responder) override;
    void missingHandler(const QHttpServerRequest &request, QHttpServerResponder &responder) override;
#else
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override;
    void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override;
#endif

private:
    struct Exchange;

    void serve(const QHttpServerRequest &request, QHttpServerResponder &&responder, WatchedSocket *socket);
    void act(const Request &request, const std::shared_ptr<Exchange> &exchange);

    Handler m_handler;
    FaultScript &m_faults;
    WatchedServer *m_listener;
};

} // namespace orvane::homeserver
