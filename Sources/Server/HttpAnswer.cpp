#include "Server/HttpAnswer.h"

#include "Server/NetworkAccess.h"

#include <QCoroNetworkReply>
#include <QNetworkReply>

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
    case QNetworkReply::ProtocolInvalidOperationError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
        return status == 0;
    default:
        return status == 0 || reply.error() < QNetworkReply::ContentAccessDenied;
    }
}

QString describe(const QNetworkReply &reply) {
    // Nothing here aborts a request but its own time-out.
    if (reply.error() == QNetworkReply::OperationCanceledError)
        return QStringLiteral("The request timed out.");
    // The library has no words for a request that it may not repeat.
    if (reply.error() == QNetworkReply::ContentReSendError)
        return QStringLiteral("Connection closed");
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
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::SameOriginRedirectPolicy);
    return request;
}

QCoro::Task<HttpAnswer> awaitAnswer(QNetworkReply *reply) {
    co_await reply;
    HttpAnswer answer;
    answer.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    // A request that timed out is closed.
    if (reply->isOpen())
        answer.body = reply->readAll();
    if (failedBelowHttp(*reply, answer.status))
        answer.transportError = describe(*reply);
    reply->deleteLater();
    co_return answer;
}

} // namespace orvane
