// SPDX-License-Identifier: MIT
#include "Support/RecordingSocketServer.h"

#include <QWebSocket>

using namespace Qt::StringLiterals;

namespace orvane {

RecordingSocketServer::RecordingSocketServer(QObject *parent)
    : QObject(parent)
    , m_server(u"recording"_s, QWebSocketServer::NonSecureMode) {
    connect(&m_server, &QWebSocketServer::newConnection, this, [this] {
        while (QWebSocket *socket = m_server.nextPendingConnection()) {
            socket->setParent(this);
            socket->setOutgoingFrameSize(QWebSocket::maxOutgoingFrameSize());
            auto connection = std::make_unique<Connection>();
            connection->socket = socket;
            connection->resource = socket->requestUrl().path(QUrl::FullyEncoded);
            if (socket->requestUrl().hasQuery())
                connection->resource += u'?' + socket->requestUrl().query();
            QObject::connect(
                socket, &QWebSocket::textMessageReceived, this,
                [record = connection.get()](const QString &frame) { record->frames.append(frame); });
            m_connections.push_back(std::move(connection));
        }
    });
    listenAgain();
    m_port = m_server.serverPort();
}

RecordingSocketServer::~RecordingSocketServer() {
    for (const auto &connection : m_connections)
        delete connection->socket;
}

QString RecordingSocketServer::url() const {
    return u"ws://127.0.0.1:%1/ws"_s.arg(m_port);
}

QStringList RecordingSocketServer::frames(qsizetype connection) const {
    return connection < connections() ? m_connections[size_t(connection)]->frames : QStringList();
}

QString RecordingSocketServer::resource(qsizetype connection) const {
    return m_connections.at(size_t(connection))->resource;
}

void RecordingSocketServer::sendText(qsizetype connection, const QString &frame) {
    m_connections.at(size_t(connection))->socket->sendTextMessage(frame);
}

void RecordingSocketServer::sendBinary(qsizetype connection, const QByteArray &frame) {
    m_connections.at(size_t(connection))->socket->sendBinaryMessage(frame);
}

void RecordingSocketServer::close(qsizetype connection) {
    m_connections.at(size_t(connection))->socket->close();
}

void RecordingSocketServer::cut(qsizetype connection) {
    m_connections.at(size_t(connection))->socket->abort();
}

void RecordingSocketServer::stopListening() {
    m_server.close();
}

void RecordingSocketServer::listenAgain() {
    if (!m_server.listen(QHostAddress::LocalHost, m_port))
        qFatal("The test server can't listen: %s", qUtf8Printable(m_server.errorString()));
}

} // namespace orvane
