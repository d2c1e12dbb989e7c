// SPDX-License-Identifier: MIT
#include "Server/HttpTransport.h"

#include "Base/Json.h"
#include "Server/ApiError.h"
#include "Server/HttpAnswer.h"
#include "Server/MultipartBody.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QCoro::Task<QByteArray> bodyOf(QNetworkReply *reply) {
    const HttpAnswer answer = co_await awaitAnswer(reply);
    if (!answer.transportError.isNull())
        throw TransportError(answer.transportError);
    if (answer.status >= 400)
        throw ApiError::api(answer.status);
    co_return answer.body;
}

void addHeaders(QNetworkRequest &request, const HttpTransport::Headers &headers) {
    for (auto header = headers.cbegin(); header != headers.cend(); ++header)
        request.setRawHeader(header.key().toUtf8(), header.value().toUtf8());
}

} // namespace

HttpTransport::HttpTransport(const QString &base, MessengerSession &session, int timeoutMs)
    : m_base(base)
    , m_session(session)
    , m_timeoutMs(timeoutMs) {}

QCoro::Task<QByteArray> HttpTransport::get(const QString &path) {
    return bodyOf(sharedNetwork().get(request(path)));
}

QCoro::Task<QByteArray> HttpTransport::post(const QString &path, const QJsonObject &body,
                                            const Headers &additionalHeaders) {
    QNetworkRequest prepared = jsonRequest(path);
    addHeaders(prepared, additionalHeaders);
    return bodyOf(sharedNetwork().post(prepared, json::compact(body)));
}

QCoro::Task<QByteArray> HttpTransport::patch(const QString &path, const QJsonObject &body) {
    return bodyOf(sharedNetwork().sendCustomRequest(jsonRequest(path), "PATCH", json::compact(body)));
}

QCoro::Task<QByteArray> HttpTransport::del(const QString &path, const QJsonObject &body) {
    return bodyOf(sharedNetwork().sendCustomRequest(jsonRequest(path), "DELETE", json::compact(body)));
}

QCoro::Task<QByteArray> HttpTransport::upload(const QString &path, const MultipartBody &body,
                                              Authorisation authorisation, const Headers &additionalHeaders) {
    QNetworkRequest prepared = request(path, authorisation);
    prepared.setHeader(QNetworkRequest::ContentTypeHeader, body.contentType());
    addHeaders(prepared, additionalHeaders);
    return bodyOf(sharedNetwork().post(prepared, body.bytes()));
}

QNetworkRequest HttpTransport::request(const QString &path, Authorisation authorisation) const {
    const QUrl url(m_base + path, QUrl::StrictMode);
    if (!url.isValid())
        qFatal("\"%s%s\" is no URL: check ORVANETALK_API_BASE.", qUtf8Printable(m_base),
               qUtf8Printable(path));
    QNetworkRequest prepared = httpRequest(url, m_timeoutMs);
    if (m_session.token && authorisation == Authorisation::token)
        prepared.setRawHeader("Authorization", "Bearer " + m_session.token->toUtf8());
    return prepared;
}

QNetworkRequest HttpTransport::jsonRequest(const QString &path) const {
    QNetworkRequest prepared = request(path);
    prepared.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    return prepared;
}

} // namespace orvane
