// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QStringList>

#include <optional>

// Readers for the fields of a request's body. A field that is missing where it is needed, of another type,
// or out of bounds is refused with 400. JSON null counts as missing. Lengths are UTF-16 units.
namespace orvane::homeserver::fields {

constexpr qsizetype shortText = 256;
constexpr qsizetype longText = qsizetype{1024} * 1024;

QString text(const QJsonObject &body, QLatin1StringView key, qsizetype most = shortText);        // not empty
QString textOrEmpty(const QJsonObject &body, QLatin1StringView key, qsizetype most = shortText); // or missing
std::optional<QString> optionalText(const QJsonObject &body, QLatin1StringView key,
                                    qsizetype most = shortText);
qint64 integer(const QJsonObject &body, QLatin1StringView key);
bool flag(const QJsonObject &body, QLatin1StringView key, bool otherwise);
QJsonObject object(const QJsonObject &body, QLatin1StringView key);
std::optional<QJsonObject> optionalObject(const QJsonObject &body, QLatin1StringView key);
QList<qint64> integers(const QJsonObject &body, QLatin1StringView key, qsizetype most = 1000);
QStringList texts(const QJsonObject &body, QLatin1StringView key, qsizetype most = 1000);

// An http or https address with a host; empty when missing.
QString webAddress(const QJsonObject &body, QLatin1StringView key);

// A user id where it may be a number or decimal text, as it is in queries and frames. Absent if neither.
std::optional<qint64> userId(const QJsonValue &value);

} // namespace orvane::homeserver::fields
