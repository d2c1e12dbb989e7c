// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace orvane {

/// One kind of record, seen only through its stored form, with an example of that form written by hand.
struct RecordKind {
    QString name;
    QByteArray example;
    QStringList optionalKeys;

    /// Reads and writes again; absent when the reading fails.
    std::function<std::optional<QJsonObject>(QJsonObject)> again;
    /// Whether both read as records that are equal.
    std::function<bool(QJsonObject, QJsonObject)> equal;
    std::function<size_t(QJsonObject)> hash;
};

const QList<RecordKind> &recordKinds();

} // namespace orvane
