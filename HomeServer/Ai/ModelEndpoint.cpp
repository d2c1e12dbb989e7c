// SPDX-License-Identifier: MIT
#include "HomeServer/Ai/ModelEndpoint.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPromise>

#include <memory>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr int timeout = 30'000; // ms

QString saidIn(const QByteArray &body) {
    const QJsonObject answer = QJsonDocument::fromJson(body).object();
    return answer["choices"_L1][0]["message"_L1]["content"_L1].toString();
}

} // namespace

ModelEndpoint::ModelEndpoint(const QString &base, QNetworkAccessManager &network)
    : m_base(base.endsWith(u'/') ? base.chopped(1) : base)
    , m_network(network) {}

QFuture<QString> ModelEndpoint::ask(const QList<ModelMessage> &messages, double temperature) {
    if (!isThere() || messages.isEmpty())
        return QtFuture::makeReadyFuture(QString());
    QJsonArray list;
    for (const ModelMessage &message : messages)
        list.append(QJsonObject{{"role"_L1, message.role}, {"content"_L1, message.content}});
    const QJsonObject body{
        {"model"_L1, "default"_L1}, {"messages"_L1, list}, {"temperature"_L1, temperature}};

    QNetworkRequest request{QUrl(m_base + u"/chat/completions"_s)};
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    request.setTransferTimeout(timeout);
    auto promise = std::make_shared<QPromise<QString>>();
    promise->start();
    QNetworkReply *reply = m_network.post(request, QJsonDocument(body).toJson(QJsonDocument::Compact));
    QObject::connect(reply, &QNetworkReply::finished, reply, [reply, promise] {
        const bool good = reply->error() == QNetworkReply::NoError;
        promise->addResult(good ? saidIn(reply->readAll()) : QString());
        promise->finish();
        reply->deleteLater();
    });
    return promise->future();
}

} // namespace orvane::homeserver
