// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QJsonObject>
#include <QString>

#include <variant>

/// What two clients say to each other directly. All functions are pure.
namespace orvane::lan {

/// The first frame of the side that dialled.
struct Hello {
    QString userId;
    bool operator==(const Hello &) const = default;
};

struct Message {
    QString chatId;
    QJsonObject message;
    bool operator==(const Message &) const = default;
};

/// Empty for a body that says neither.
using Frame = std::variant<std::monostate, Hello, Message>;
Frame parseFrame(QByteArrayView body);

QJsonObject hello(const QString &userId, const QString &deviceId);
QJsonObject message(const QString &chatId, const QJsonObject &message);

/// The body as compact JSON behind its length in 4 bytes, big-endian. A body that 32 bits can't count ends
/// the process.
QByteArray framed(const QJsonObject &body);

} // namespace orvane::lan
