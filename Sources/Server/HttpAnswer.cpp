// SPDX-License-Identifier: MIT
#include "Server/HttpAnswer.h"

#include "Server/NetworkAccess.h"

#include <QCoroNetworkReply>
#include <QNetworkReply>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

// An error status is an answer, and so is a redirect that is not followed; a connection that broke is none,
// whatever status it had begun with.
bool failedBelowHttp(const QNetworkReply &reply, int status) {
    switch (reply.error()) {
    case QNetworkReply::NoError:
        return false;
    case QNetworkReply::ProtocolFailure:
    case QNetworkReply::ContentReSendError:
        return true;
    case QNetworkReply::ProtocolUnknownError:
    case QNetworkReply::InsecureRedirectError:
        return status < 300 || status >= 400;
    case QNetworkReply::UnknownContentError:
        // Told of a body that can't be unpacked, too.
        return status < 400;
    case QNetworkReply::ProtocolInvalidOperationError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
        return status == 0;
    default:
        return status == 0 || reply.error() < QNetworkReply::ContentAccessDenied;
    }
}

/// Takes a body over while it comes, and gives the request up once that is too much.
class Intake : public QObject {
public:
    Intake(QNetworkReply *reply, qint64 limit)
        : QObject(reply)
        , m_reply(reply)
        , m_limit(limit) {
        // Who sends faster than is taken here has to wait.
        reply->setReadBufferSize(largestAhead);
        connect(reply, &QNetworkReply::readyRead, this, &Intake::take);
    }

    void take() {
        while (m_reply->isOpen()) {
            const QByteArray part = m_reply->read(largestPart);
            if (part.isEmpty())
                return;
            m_isTooLarge = m_body.size() + part.size() > m_limit;
            if (m_isTooLarge) {
                m_body.clear();
                m_reply->abort();
                return;
            }
            m_body += part;
        }
    }

    bool isTooLarge() const { return m_isTooLarge; }
    QByteArray body() const { return m_body; }

private:
    static constexpr qint64 largestAhead = 4LL * 1024 * 1024;
    static constexpr qint64 largestPart = 65'536;

    QNetworkReply *m_reply;
    qint64 m_limit;
    QByteArray m_body;
    bool m_isTooLarge = false;
};

// The library may take a connection that was to close anyway for the end of the body. That of a redirect it
// keeps to itself.
bool isCutShort(const QNetworkReply &reply, int status, const QByteArray &body) {
    if (status >= 300 && status < 400)
        return false;
    bool isAnnounced = false;
    const qint64 length = reply.rawHeader("Content-Length").toLongLong(&isAnnounced);
    return isAnnounced && !reply.hasRawHeader("Content-Encoding") && body.size() < length;
}

QString describe(const QNetworkReply &reply, const Intake &intake) {
    if (intake.isTooLarge())
        return u"The answer is too large."_s;
    // Nothing else here aborts a request but its own time-out.
    if (reply.error() == QNetworkReply::OperationCanceledError)
        return u"The request timed out."_s;
    // The library has no words for a request that it may not repeat, nor for a body that was cut short.
    if (reply.error() == QNetworkReply::ContentReSendError || reply.error() == QNetworkReply::NoError)
        return u"Connection closed"_s;
    return reply.errorString();
}

} // namespace

QNetworkAccessManager &sharedNetwork() {
    static auto *network = new NetworkAccess;
    return *network;
}

QNetworkRequest httpRequest(const QUrl &url, int timeoutMs) {
    QNetworkRequest request(url);
    request.setTransferTimeout(timeoutMs);
    // Packed or not, a body has one limit, and awaitAnswer keeps it.
    request.setDecompressedSafetyCheckThreshold(-1);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::SameOriginRedirectPolicy);
    return request;
}

QCoro::Task<HttpAnswer> awaitAnswer(QNetworkReply *reply, qint64 limit) {
    auto *intake = new Intake(reply, limit);
    co_await reply;
    intake->take();
    HttpAnswer answer;
    answer.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    answer.body = intake->body();
    if (intake->isTooLarge() || failedBelowHttp(*reply, answer.status) ||
        isCutShort(*reply, answer.status, answer.body))
        answer.transportError = describe(*reply, *intake);
    reply->deleteLater();
    co_return answer;
}

} // namespace orvane
