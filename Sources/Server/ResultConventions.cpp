// SPDX-License-Identifier: MIT
#include "Server/ResultConventions.h"

#include "Server/ApiError.h"

namespace orvane {

QCoro::Task<QList<QJsonObject>> listUnder(QCoro::Task<QByteArray> answer, QString key) {
    const QJsonObject object = co_await mapOrEmpty(std::move(answer));
    co_return json::objects(object, key);
}

QCoro::Task<QJsonObject> mapOrEmpty(QCoro::Task<QByteArray> answer) {
    const QByteArray bytes = co_await answer;
    co_return json::parseObject(bytes).value_or(QJsonObject());
}

QCoro::Task<QJsonObject> mapOr500(QCoro::Task<QByteArray> answer) {
    const QByteArray bytes = co_await answer;
    const auto object = json::parseObject(bytes);
    if (!object)
        throw ApiError::api(500);
    co_return *object;
}

QCoro::Task<void> none(QCoro::Task<QByteArray> answer) {
    co_await answer;
}

} // namespace orvane
