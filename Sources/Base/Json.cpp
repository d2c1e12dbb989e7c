// SPDX-License-Identifier: MIT
#include "Base/Json.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <limits>

using namespace Qt::StringLiterals;

namespace orvane::json {

namespace {

template <typename T>
std::optional<T> read(const QJsonObject &object, QStringView key,
                      std::optional<T> (*as)(const QJsonValue &)) {
    const auto found = object.constFind(key);
    return found == object.constEnd() ? std::nullopt : as(*found);
}

// QJsonDocument takes only objects and lists at the top level.
QJsonValue parseScalar(const QByteArray &bytes) {
    QJsonParseError error;
    const QJsonArray wrapped = QJsonDocument::fromJson('[' + bytes + ']', &error).array();
    if (error.error != QJsonParseError::NoError || wrapped.size() != 1)
        throw JsonError(u"The data is not valid JSON."_s);
    return wrapped.first();
}

} // namespace

QJsonValue parse(const QByteArray &bytes) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error == QJsonParseError::NoError)
        return document.isObject() ? QJsonValue(document.object()) : QJsonValue(document.array());
    const QByteArray trimmed = bytes.trimmed();
    if (trimmed.isEmpty() || trimmed.startsWith('{') || trimmed.startsWith('['))
        throw JsonError(u"The data is not valid JSON: %1."_s.arg(error.errorString()));
    return parseScalar(trimmed);
}

std::optional<QJsonObject> parseObject(const QByteArray &bytes) {
    const QJsonValue top = parse(bytes);
    return top.isObject() ? std::optional(top.toObject()) : std::nullopt;
}

std::optional<QJsonObject> readObject(const QByteArray &bytes) {
    try {
        return parseObject(bytes);
    } catch (const JsonError &) {
        return std::nullopt;
    }
}

QByteArray compact(const QJsonObject &object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<QString> asText(const QJsonValue &value) {
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<qint64> asInteger(const QJsonValue &value) {
    if (!value.isDouble())
        return std::nullopt;
    // Two different defaults tell "not an integer" from an integer that equals a default.
    const qint64 low = value.toInteger(std::numeric_limits<qint64>::min());
    if (low != std::numeric_limits<qint64>::min())
        return low;
    return value.toInteger(0) == low ? std::optional(low) : std::nullopt;
}

std::optional<double> asNumber(const QJsonValue &value) {
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

std::optional<bool> asBoolean(const QJsonValue &value) {
    return value.isBool() ? std::optional(value.toBool()) : std::nullopt;
}

std::optional<QString> text(const QJsonObject &object, QStringView key) {
    return read(object, key, asText);
}

std::optional<qint64> integer(const QJsonObject &object, QStringView key) {
    return read(object, key, asInteger);
}

std::optional<double> number(const QJsonObject &object, QStringView key) {
    return read(object, key, asNumber);
}

std::optional<bool> boolean(const QJsonObject &object, QStringView key) {
    return read(object, key, asBoolean);
}

std::optional<QJsonObject> object(const QJsonObject &object, QStringView key) {
    const auto found = object.constFind(key);
    return found != object.constEnd() && found->isObject() ? std::optional(found->toObject()) : std::nullopt;
}

std::optional<QJsonArray> list(const QJsonObject &object, QStringView key) {
    const auto found = object.constFind(key);
    return found != object.constEnd() && found->isArray() ? std::optional(found->toArray()) : std::nullopt;
}

std::optional<QStringList> texts(const QJsonObject &object, QStringView key) {
    const auto elements = list(object, key);
    if (!elements)
        return std::nullopt;
    QStringList result;
    result.reserve(elements->size());
    for (const auto &element : *elements) {
        if (!element.isString())
            return std::nullopt;
        result.append(element.toString());
    }
    return result;
}

QList<QJsonObject> objects(const QJsonObject &object, QStringView key) {
    QList<QJsonObject> result;
    const QJsonArray elements = list(object, key).value_or(QJsonArray());
    result.reserve(elements.size());
    for (const auto &element : elements) {
        if (!element.isObject())
            return {};
        result.append(element.toObject());
    }
    return result;
}

} // namespace orvane::json
