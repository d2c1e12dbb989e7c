// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Http/BodyBudget.h"
#include "HomeServer/Http/RequestHead.h"

#include <QObject>
#include <QTcpSocket>
#include <QTimer>

#include <functional>

namespace orvane::homeserver {

// One client of the REST port. It reads one request after the other, each only when the one before has been
// answered, so that answers keep their order, and closes itself when a client is slow: 10 s for a head, 10 s
// for every piece of a body, two minutes between requests. Ends with its socket.
class Connection : public QObject {
    Q_OBJECT

public:
    static constexpr qsizetype longestHead = 32LL * 1024;

    // Called after the head: completes the request's address, and says how long its body may be. Refuses by
    // throwing, and then no body is read.
    using Admit = std::function<qint64(RequestHead &head)>;

    // Takes the socket.
    Connection(QTcpSocket *socket, Admit admit, BodyBudget &budget, int patience, QObject *parent);
    ~Connection() override;

    QTcpSocket *socket() const { return m_socket; }

    // To the request that was handed out last. Later calls do nothing.
    void answer(const Answer &answer);
    // Closes the connection without an answer.
    void hangUp();

Q_SIGNALS:
    void requested(const orvane::homeserver::Request &request);

private:
    enum class State { Head, Body, Acting, Leaving };

    void proceed();
    bool readHead();
    bool readBody();
    void write(const Answer &answer, bool last);
    // Answers in the middle of a request, whose rest is thrown away.
    void refuse(const Answer &answer);
    void release();

    QTcpSocket *m_socket;
    Admit m_admit;
    BodyBudget &m_budget;
    QHostAddress m_peer;
    int m_patience; // ms
    QTimer m_deadline;
    State m_state = State::Head;
    QByteArray m_buffer; // of the head, then of the body
    RequestHead m_head;
    bool m_bodyless = false; // the answer goes without its body
    qint64 m_taken = 0;
};

} // namespace orvane::homeserver
