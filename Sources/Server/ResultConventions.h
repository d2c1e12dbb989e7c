// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Json.h"

#include <QCoroTask>

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QStringList>

/// The five ways in which an operation reads its answer. All but `none` throw JsonError when the bytes are no
/// JSON, and pass on what the request threw.
namespace orvane {

/// The objects of the list under `key`; empty for every other shape.
QCoro::Task<QList<QJsonObject>> listUnder(QCoro::Task<QByteArray> answer, QString key);

/// The top-level object, or an empty one.
QCoro::Task<QJsonObject> mapOrEmpty(QCoro::Task<QByteArray> answer);

/// The top-level object; any other top level throws ApiError "api" 500.
QCoro::Task<QJsonObject> mapOr500(QCoro::Task<QByteArray> answer);

/// The value under `key` as the type that `as` reads, or `fallback`.
template <typename T>
QCoro::Task<T> valueUnder(QCoro::Task<QByteArray> answer, QString key,
                          std::optional<T> (*as)(const QJsonObject &, QStringView), T fallback) {
    const QJsonObject object = co_await mapOrEmpty(std::move(answer));
    co_return as(object, key).value_or(fallback);
}

/// Nothing is read of the answer.
QCoro::Task<void> none(QCoro::Task<QByteArray> answer);

} // namespace orvane
