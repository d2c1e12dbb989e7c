// SPDX-License-Identifier: MIT
#include "LocalNetwork/LanFrames.h"

#include "Base/Json.h"

#include <QJsonDocument>
#include <QtEndian>

#include <limits>

namespace orvane::lan {

using namespace Qt::StringLiterals;

Frame parseFrame(QByteArrayView body) {
    const QJsonObject object =
        QJsonDocument::fromJson(QByteArray::fromRawData(body.data(), body.size())).object();
    const auto type = json::text(object, u"type");
    if (type == u"hello"_s) {
        if (auto userId = json::text(object, u"user_id"))
            return Hello{*userId};
    } else if (type == u"message"_s) {
        auto chatId = json::text(object, u"chat_id");
        auto message = json::object(object, u"message");
        if (chatId && message)
            return Message{*chatId, *message};
    }
    return {};
}

QJsonObject hello(const QString &userId, const QString &deviceId) {
    return {{u"type"_s, u"hello"_s}, {u"user_id"_s, userId}, {u"device_id"_s, deviceId}};
}

QJsonObject message(const QString &chatId, const QJsonObject &message) {
    return {{u"type"_s, u"message"_s}, {u"chat_id"_s, chatId}, {u"message"_s, message}};
}

QByteArray framed(const QJsonObject &body) {
    const QByteArray bytes = json::compact(body);
    if (bytes.size() > std::numeric_limits<quint32>::max())
        qFatal("A frame can't hold %lld bytes.", static_cast<long long>(bytes.size()));
    QByteArray frame(qsizetype(sizeof(quint32)), Qt::Uninitialized);
    qToBigEndian(quint32(bytes.size()), frame.data());
    return frame.append(bytes);
}

} // namespace orvane::lan
