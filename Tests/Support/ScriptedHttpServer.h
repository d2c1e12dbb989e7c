// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>

#include <optional>

class QTcpSocket;

namespace orvane {

struct RecordedRequest {
    QByteArray method;
    /// Path and query as they stood in the request line.
    QByteArray target;
    /// Names in lower case.
    QHash<QByteArray, QByteArray> headers;
    QByteArray body;
};

/// What the server does with one request.
struct ScriptedAnswer {
    /// asAsked: the connection ends if the request wants it to.
    enum class Afterwards { keepOpen, close, asAsked };

    /// Absent: not a byte is sent.
    std::optional<QByteArray> bytes;
    Afterwards afterwards = Afterwards::keepOpen;
    /// Sent only after ScriptedHttpServer::release().
    bool held = false;

    static ScriptedAnswer of(int status, const QByteArray &body = {}, const QByteArray &extraHeaders = {});
    /// Promises more bytes than come, then ends the connection.
    static ScriptedAnswer truncated(const QByteArray &body);
    static ScriptedAnswer closed() { return {std::nullopt, Afterwards::close, false}; }
    static ScriptedAnswer silence() { return {std::nullopt, Afterwards::keepOpen, false}; }
    /// Word for word.
    static ScriptedAnswer raw(const QByteArray &bytes) { return {bytes, Afterwards::close, false}; }
    ScriptedAnswer heldBack() const;
};

/// An HTTP/1.1 server on a free port of loopback that records every request and answers in the order of its
/// script. Where the script is empty it answers 200 and "{}". Connections are kept open.
class ScriptedHttpServer : public QObject {
    Q_OBJECT

public:
    explicit ScriptedHttpServer(QObject *parent = nullptr);

    /// "http://127.0.0.1:port", without a trailing slash.
    QString base() const;
    quint16 port() const { return m_server.serverPort(); }

    void answerNext(const ScriptedAnswer &answer) { m_script.append(answer); }
    /// For every request to this path, with any query, while the script is empty.
    void answerFor(const QByteArray &path, const ScriptedAnswer &answer) { m_standing.insert(path, answer); }
    /// From now on a connection ends at the first bytes of its second request, which is recorded without
    /// them.
    void endReused() { m_endsReused = true; }
    /// Sends the answers that were held back, in the order of their requests.
    void release();

    const QList<RecordedRequest> &requests() const { return m_requests; }
    RecordedRequest lastRequest() const {
        return m_requests.isEmpty() ? RecordedRequest() : m_requests.last();
    }

    /// Forgets requests and script.
    void reset();

private:
    struct Held {
        QPointer<QTcpSocket> socket;
        ScriptedAnswer answer;
    };

    void accept();
    void read(QTcpSocket *socket);
    void answer(QTcpSocket *socket);

    struct Incoming {
        QByteArray unread;
        int answered = 0;
    };

    QHash<QTcpSocket *, Incoming> m_incoming;
    bool m_endsReused = false;
    QList<ScriptedAnswer> m_script;
    QHash<QByteArray, ScriptedAnswer> m_standing;
    QList<Held> m_held;
    QList<RecordedRequest> m_requests;
    /// Last: its connections end, and say so, while the rest is still there.
    QTcpServer m_server;
};

} // namespace orvane
