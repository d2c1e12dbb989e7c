// SPDX-License-Identifier: MIT
#include "HomeServer/Http/HttpFront.h"

#include "HomeServer/FaultScript.h"

namespace orvane::homeserver {

namespace {

QHostAddress withoutMapping(const QHostAddress &address) {
    bool mapped = false;
    const quint32 four = address.toIPv4Address(&mapped);
    return mapped ? QHostAddress(four) : address;
}

// Who sent it: the peer, or whom a proxy of ours says it speaks for.
QHostAddress senderOf(const RequestHead &head, const QHostAddress &peer, const QList<QHostAddress> &proxies) {
    if (!proxies.contains(peer))
        return peer;
    const QHostAddress forwarded(QString::fromLatin1(head.forwardedFor));
    return forwarded.isNull() ? peer : withoutMapping(forwarded);
}

} // namespace

HttpFront::HttpFront(Doorkeeper doorkeeper, Handler handler, FaultScript &faults, const Limits &limits)
    : m_doorkeeper(std::move(doorkeeper))
    , m_handler(std::move(handler))
    , m_faults(faults)
    , m_limits(limits)
    , m_budget(limits.unfinishedBytes, limits.unfinishedPerAddress)
    , m_gate(limits.connections) {
    connect(&m_gate, &Gate::arrived, this, &HttpFront::accept);
}

void HttpFront::close() {
    m_gate.close();
    m_gate.closeAll();
    // They give back what they took of the budget, so they can't outlive it.
    qDeleteAll(findChildren<Connection *>(Qt::FindDirectChildrenOnly));
}

void HttpFront::accept(QTcpSocket *socket) {
    const auto admit = [this, socket](RequestHead &head) {
        head.request.address =
            senderOf(head, withoutMapping(socket->peerAddress()), m_limits.connections.proxies);
        const Admission admission = m_doorkeeper(head.request);
        if (admission.member)
            m_gate.trust(socket);
        return admission.longestBody;
    };
    auto *connection = new Connection(socket, admit, m_budget, m_limits.patience, this);
    connect(connection, &Connection::requested, this,
            [this, connection](const Request &request) { serve(request, connection); });
}

void HttpFront::serve(const Request &request, Connection *connection) {
    const auto fault = m_faults.take(request.method, u'/' + request.segments.join(u'/'));
    if (!fault) {
        act(request, connection);
        return;
    }
    switch (fault->kind) {
    case FaultScript::Kind::Delay:
        QTimer::singleShot(fault->milliseconds, this,
                           [this, request, there = QPointer(connection)] { act(request, there); });
        break;
    case FaultScript::Kind::Drop:
        connection->hangUp();
        break;
    case FaultScript::Kind::Duplicate:
        m_handler(request,
                  [this, request, there = QPointer(connection)](const Answer &) { act(request, there); });
        break;
    case FaultScript::Kind::AnswerWith: {
        Answer answer(fault->body, "application/json");
        answer.status = fault->status;
        connection->answer(answer);
        break;
    }
    case FaultScript::Kind::LoseAnswer:
        m_handler(request, [there = QPointer(connection)](const Answer &) {
            if (there)
                there->hangUp();
        });
        break;
    }
}

void HttpFront::act(const Request &request, const QPointer<Connection> &connection) {
    m_handler(request, [there = connection](const Answer &answer) {
        if (there)
            there->answer(answer);
    });
}

} // namespace orvane::homeserver
