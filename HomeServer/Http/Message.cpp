// SPDX-License-Identifier: MIT
#include "HomeServer/Http/Message.h"

#include <QJsonDocument>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

Answer::Answer(const QJsonObject &object, int code)
    : status(code)
    , body(QJsonDocument(object).toJson(QJsonDocument::Compact)) {}

Answer::Answer(QByteArray bytes, QByteArray type)
    : body(std::move(bytes))
    , mimeType(std::move(type)) {}

Answer Answer::error(int status, const QByteArray &code) {
    return Answer(QJsonObject{{"error_code"_L1, QString::fromLatin1(code)}}, status);
}

} // namespace orvane::homeserver
