// SPDX-License-Identifier: MIT
#include "HomeServer/Http/HttpFront.h"

#include "HomeServer/FaultScript.h"
#include "HomeServer/Http/WatchedServer.h"

#include <QHttpServerRequest>
#include <QMetaEnum>
#include <QTimer>

namespace orvane::homeserver {

namespace {

QByteArray bearerToken(const QByteArray &authorization) {
    static const QByteArray scheme = "bearer ";
    return authorization.left(scheme.size()).toLower() == scheme ? authorization.mid(scheme.size()).trimmed()
                                                                 : QByteArray();
}

Request readRequest(const QHttpServerRequest &source) {
    Request request;
    request.method = QByteArray(QMetaEnum::fromType<QHttpServerRequest::Method>().valueToKey(
                                    static_cast<int>(source.method())))
                         .toUpper();
    const QByteArray path = source.url().path(QUrl::FullyEncoded).toUtf8();
    for (const QByteArray &segment : path.mid(1).split('/'))
        request.segments.append(QString::fromUtf8(QByteArray::fromPercentEncoding(segment)));
    request.query = source.query();
    request.token = bearerToken(source.value("authorization"));
    request.idempotencyKey = source.value("idempotency-key");
    request.contentType = source.value("content-type");
    request.body = source.body();
    request.address = source.remoteAddress();
    return request;
}

} // namespace

// One request's way back. The responder is of no use once its socket is gone.
struct HttpFront::Exchange {
    QHttpServerResponder responder;
    QPointer<WatchedSocket> socket;

    void answer(const Answer &answer) {
        if (!socket || socket->state() != QAbstractSocket::ConnectedState)
            return;
        socket->answered();
        responder.write(answer.body, answer.mimeType,
                        static_cast<QHttpServerResponder::StatusCode>(answer.status));
    }

    // Later, because the HTTP layer still works on the socket when it hands out a request.
    void hangUp() const {
        if (socket)
            QMetaObject::invokeMethod(socket.data(), &QAbstractSocket::abort, Qt::QueuedConnection);
    }
};

HttpFront::HttpFront(Handler handler, FaultScript &faults)
    : m_handler(std::move(handler))
    , m_faults(faults)
    , m_listener(new WatchedServer(this)) {}

bool HttpFront::listen(const QHostAddress &address, quint16 port) {
    if (!m_listener->listen(address, port))
        return false;
    bind(m_listener);
    return true;
}

quint16 HttpFront::port() const {
    return m_listener->serverPort();
}

QString HttpFront::errorText() const {
    return m_listener->errorString();
}

void HttpFront::close() {
    m_listener->close();
    m_listener->closeAll();
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
bool HttpFront::handleRequest(const QHttpServerRequest &request, QHttpServerResponder &responder) {
    serve(request, std::move(responder),
          m_listener->socketFrom(request.remoteAddress(), request.remotePort()));
    return true;
}

void HttpFront::missingHandler(const QHttpServerRequest &, QHttpServerResponder &) {}
#else
bool HttpFront::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) {
    serve(request, makeResponder(request, socket), qobject_cast<WatchedSocket *>(socket));
    return true;
}

void HttpFront::missingHandler(const QHttpServerRequest &, QTcpSocket *) {}
#endif

void HttpFront::serve(const QHttpServerRequest &source, QHttpServerResponder &&responder,
                      WatchedSocket *socket) {
    const Request request = readRequest(source);
    const auto exchange = std::make_shared<Exchange>(Exchange{std::move(responder), socket});
    const auto fault = m_faults.take(request.method, u'/' + request.segments.join(u'/'));
    if (!fault) {
        act(request, exchange);
        return;
    }
    switch (fault->kind) {
    case FaultScript::Kind::Delay:
        QTimer::singleShot(fault->milliseconds, this, [this, request, exchange] { act(request, exchange); });
        break;
    case FaultScript::Kind::Drop:
        exchange->hangUp();
        break;
    case FaultScript::Kind::Duplicate:
        m_handler(request, [this, request, exchange](const Answer &) { act(request, exchange); });
        break;
    case FaultScript::Kind::AnswerWith: {
        Answer answer(fault->body, "application/json");
        answer.status = fault->status;
        exchange->answer(answer);
        break;
    }
    case FaultScript::Kind::LoseAnswer:
        m_handler(request, [exchange](const Answer &) { exchange->hangUp(); });
        break;
    }
}

void HttpFront::act(const Request &request, const std::shared_ptr<Exchange> &exchange) {
    m_handler(request, [exchange](const Answer &answer) { exchange->answer(answer); });
}

} // namespace orvane::homeserver
