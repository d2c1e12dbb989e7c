// SPDX-License-Identifier: MIT
#pragma once

#include "Base/DescribedError.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QStringList>

#include <optional>

namespace orvane {

/// The bytes are no JSON (RFC 8259).
class JsonError : public DescribedError {
    using DescribedError::DescribedError;
};

} // namespace orvane

/// Readers of JSON from outside. A key of another type counts as absent, and texts and numbers are never
/// converted into each other. All are pure and thread-safe.
namespace orvane::json {

/// Throws JsonError. Any value may stand at the top level.
QJsonValue parse(const QByteArray &bytes);

/// Throws JsonError for bytes that are no JSON; absent when the top level is no object.
std::optional<QJsonObject> parseObject(const QByteArray &bytes);

/// The same, and absent for bytes that are no JSON as well.
std::optional<QJsonObject> readObject(const QByteArray &bytes);

/// Compact UTF-8.
QByteArray compact(const QJsonObject &object);

std::optional<QString> asText(const QJsonValue &value);
/// Numbers that are exactly representable as a signed 64-bit integer: 1, 1.0 and 1e3, not 1.5 or 1e300.
std::optional<qint64> asInteger(const QJsonValue &value);
std::optional<double> asNumber(const QJsonValue &value);
std::optional<bool> asBoolean(const QJsonValue &value);

std::optional<QString> text(const QJsonObject &object, QStringView key);
std::optional<qint64> integer(const QJsonObject &object, QStringView key);
std::optional<double> number(const QJsonObject &object, QStringView key);
std::optional<bool> boolean(const QJsonObject &object, QStringView key);
std::optional<QJsonObject> object(const QJsonObject &object, QStringView key);
std::optional<QJsonArray> list(const QJsonObject &object, QStringView key);
/// A list in which every element is a text.
std::optional<QStringList> texts(const QJsonObject &object, QStringView key);

/// The list of objects under `key`; empty when it is missing or holds anything else.
QList<QJsonObject> objects(const QJsonObject &object, QStringView key);

} // namespace orvane::json
