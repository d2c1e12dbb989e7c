// SPDX-License-Identifier: MIT
#include "HomeServer/Http/Fields.h"

#include "HomeServer/Http/Message.h"

#include <QUrl>

namespace orvane::homeserver::fields {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestAddress = 2000;

// Two defaults tell a whole number from everything that toInteger can't represent.
std::optional<qint64> wholeNumber(const QJsonValue &value) {
    const qint64 number = value.toInteger(0);
    return number == value.toInteger(1) ? std::optional(number) : std::nullopt;
}

QJsonArray list(const QJsonObject &body, QLatin1StringView key, qsizetype most) {
    const QJsonValue value = body.value(key);
    if (!value.isArray())
        refuseBadRequest();
    const QJsonArray array = value.toArray();
    if (array.size() > most)
        refuseBadRequest();
    return array;
}

} // namespace

std::optional<QString> optionalText(const QJsonObject &body, QLatin1StringView key, qsizetype most) {
    const QJsonValue value = body.value(key);
    if (value.isUndefined() || value.isNull())
        return std::nullopt;
    if (!value.isString())
        refuseBadRequest();
    QString result = value.toString();
    if (result.size() > most)
        refuseBadRequest();
    return result;
}

QString textOrEmpty(const QJsonObject &body, QLatin1StringView key, qsizetype most) {
    return optionalText(body, key, most).value_or(QString());
}

QString text(const QJsonObject &body, QLatin1StringView key, qsizetype most) {
    QString result = textOrEmpty(body, key, most);
    if (result.isEmpty())
        refuseBadRequest();
    return result;
}

qint64 integer(const QJsonObject &body, QLatin1StringView key) {
    const auto number = wholeNumber(body.value(key));
    if (!number)
        refuseBadRequest();
    return *number;
}

bool flag(const QJsonObject &body, QLatin1StringView key, bool otherwise) {
    const QJsonValue value = body.value(key);
    if (value.isUndefined() || value.isNull())
        return otherwise;
    if (!value.isBool())
        refuseBadRequest();
    return value.toBool();
}

std::optional<QJsonObject> optionalObject(const QJsonObject &body, QLatin1StringView key) {
    const QJsonValue value = body.value(key);
    if (value.isUndefined() || value.isNull())
        return std::nullopt;
    if (!value.isObject())
        refuseBadRequest();
    return value.toObject();
}

QJsonObject object(const QJsonObject &body, QLatin1StringView key) {
    const auto result = optionalObject(body, key);
    if (!result)
        refuseBadRequest();
    return *result;
}

QList<qint64> integers(const QJsonObject &body, QLatin1StringView key, qsizetype most) {
    QList<qint64> result;
    for (const QJsonValue value : list(body, key, most)) {
        const auto number = wholeNumber(value);
        if (!number)
            refuseBadRequest();
        result.append(*number);
    }
    return result;
}

QStringList texts(const QJsonObject &body, QLatin1StringView key, qsizetype most) {
    QStringList result;
    for (const QJsonValue value : list(body, key, most)) {
        if (!value.isString() || value.toString().size() > longText)
            refuseBadRequest();
        result.append(value.toString());
    }
    return result;
}

QString webAddress(const QJsonObject &body, QLatin1StringView key) {
    QString result = textOrEmpty(body, key, longestAddress);
    const QUrl url(result, QUrl::StrictMode);
    const bool web = url.scheme() == "https"_L1 || url.scheme() == "http"_L1;
    if (!result.isEmpty() && (!url.isValid() || !web || url.host().isEmpty()))
        refuseBadRequest();
    return result;
}

std::optional<qint64> userId(const QJsonValue &value) {
    if (!value.isString())
        return wholeNumber(value);
    bool decimal = false;
    const qint64 number = value.toString().toLongLong(&decimal);
    return decimal ? std::optional(number) : std::nullopt;
}

} // namespace orvane::homeserver::fields
