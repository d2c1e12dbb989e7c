// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Json.h"
#include "Support/InRow.h"

#include <QTest>

#include <functional>
#include <vector>

namespace orvane {

using namespace Qt::StringLiterals;

/// How something is read from what came from outside: a good map, and what becomes of it when a key is
/// missing or has another type.
struct Reading {
    QByteArray name;
    QByteArray good;
    /// In words that the test chooses; empty where nothing is read.
    std::function<QString(const QJsonObject &)> read;
    QString told;
    /// What is told without a key, "path told; path told", with dots in a path. Other keys are not read.
    QString without = {};
};

/// The map with another value at the path; undefined takes the key away.
inline QJsonObject withValue(QJsonObject map, const QString &path, const QJsonValue &value) {
    const QString key = path.section(u'.', 0, 0);
    const QString rest = path.section(u'.', 1);
    const QJsonValue next = rest.isEmpty() ? value : withValue(map.value(key).toObject(), rest, value);
    if (next.isUndefined())
        map.remove(key);
    else
        map.insert(key, next);
    return map;
}

inline void checkAgainstHostileShapes(const std::vector<Reading> &readings) {
    const QJsonObject object{{"id", "x"}};
    const QJsonValue values[] = {
        QJsonValue::Undefined, QJsonValue::Null,  true, 7, 0.5, QString("text"), object, QJsonArray(),
        QJsonArray{1, "text"}, QJsonArray{object}};
    for (const Reading &reading : readings) {
        const QJsonObject good = json::parseObject(reading.good).value();
        const InRow row(reading.name);
        QCOMPARE(reading.read(good), reading.told);
        for (const QString &entry : reading.without.split(u"; "_s, Qt::SkipEmptyParts)) {
            const QString path = entry.section(u' ', 0, 0);
            const QString told = entry.section(u' ', 1);
            QJsonValue taken = good;
            for (const QString &key : path.split(u'.'))
                taken = taken.toObject().value(key);
            for (const QJsonValue &value : values) {
                if (value.type() == taken.type())
                    continue;
                const InRow shape(path.toUtf8() + " as " + QByteArray::number(value.type()));
                QCOMPARE(reading.read(withValue(good, path, value)), told);
            }
        }
    }
}

} // namespace orvane
