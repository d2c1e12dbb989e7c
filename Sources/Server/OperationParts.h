// SPDX-License-Identifier: MIT
#pragma once

#include "Session/UserIdText.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QStringList>
#include <QStringView>
#include <QUrl>

#include <optional>

/// What the operations of MessengerAPI are written with. Pure.
namespace orvane::operation {

using namespace Qt::StringLiterals;

/// "/api/messenger" and the tail, whose %1, %2… are replaced as given, in one pass.
template <typename... Parts>
QString messenger(QStringView tail, const Parts &...parts) {
    QString path = u"/api/messenger"_s;
    if constexpr (sizeof...(parts) == 0)
        return path.append(tail);
    else
        return path.append(tail.arg(parts...));
}

/// Percent-encoded (RFC 3986), but for what may stand in a query: "&", "=" and "+" among it.
inline QString inQuery(const QString &text) {
    return QString::fromLatin1(QUrl::toPercentEncoding(text, "!$&'()*+,;=:@/?"));
}

/// 0 for a text that is no user id.
inline qint64 userId(const QString &text) {
    return parseUserId(text).value_or(0);
}

inline QJsonArray userIds(const QStringList &texts) {
    QJsonArray ids;
    for (const QString &text : texts)
        ids.append(userId(text));
    return ids;
}

/// Without the texts that are no user id.
inline QJsonArray onlyUserIds(const QStringList &texts) {
    QJsonArray ids;
    for (const QString &text : texts)
        if (const auto id = parseUserId(text))
            ids.append(*id);
    return ids;
}

inline QJsonValue orNull(const std::optional<QString> &text) {
    return text ? QJsonValue(*text) : QJsonValue(QJsonValue::Null);
}

inline QJsonObject toJson(const QMap<QString, QString> &map) {
    QJsonObject object;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        object.insert(entry.key(), entry.value());
    return object;
}

inline QJsonArray toJson(const QList<QMap<QString, QString>> &maps) {
    QJsonArray list;
    for (const auto &map : maps)
        list.append(toJson(map));
    return list;
}

} // namespace orvane::operation
