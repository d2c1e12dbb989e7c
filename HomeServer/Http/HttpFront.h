// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Http/Connection.h"
#include "HomeServer/Http/Gate.h"

#include <QPointer>

#include <functional>

namespace orvane::homeserver {

class FaultScript;

// The REST port: turns what arrives into a Request, hands it on, and writes the answer when it comes, at
// once or later. Faults of the script happen here, outside everything that acts.
class HttpFront : public QObject {
    Q_OBJECT

public:
    // What a request may weigh without its head, in bytes.
    static constexpr qint64 maxBody = qint64{1024} * 1024;
    static constexpr qint64 maxUpload = qint64{32} * 1024 * 1024;

    // What the head alone tells.
    struct Admission {
        qint64 longestBody = maxBody;
        bool member = false; // it carries a valid token
    };

    using Finish = std::function<void(const Answer &)>;
    // Calls `finish` exactly once, on this thread.
    using Handler = std::function<void(const Request &, const Finish &)>;
    // Refuses by throwing, before the body is read.
    using Doorkeeper = std::function<Admission(const Request &)>;

    struct Limits {
        GateBounds connections;
        int patience = 10'000;                                  // ms for a head, and for a piece of a body
        qint64 unfinishedBytes = qint64{256} * 1024 * 1024;     // of all requests under way
        qint64 unfinishedPerAddress = qint64{96} * 1024 * 1024; // of those from one address
    };

    HttpFront(Doorkeeper doorkeeper, Handler handler, FaultScript &faults, const Limits &limits);

    // False when the port is taken or the address not ours.
    bool listen(const QHostAddress &address, quint16 port) { return m_gate.listen(address, port); }
    quint16 port() const { return m_gate.serverPort(); }
    QString errorText() const { return m_gate.errorString(); }
    void close();

private:
    void accept(QTcpSocket *socket);
    void serve(const Request &request, Connection *connection);
    void act(const Request &request, const QPointer<Connection> &connection);

    Doorkeeper m_doorkeeper;
    Handler m_handler;
    FaultScript &m_faults;
    Limits m_limits;
    BodyBudget m_budget;
    Gate m_gate;
};

} // namespace orvane::homeserver
