// SPDX-License-Identifier: MIT
#include "Server/PostMessage.h"

#include "Base/Json.h"
#include "Server/ApiError.h"

using namespace Qt::StringLiterals;

namespace orvane {

QCoro::Task<void> postMessage(MessengerAPI &api, QString chatID, QJsonObject body, QString idempotencyKey) {
    const QString path = u"/api/messenger/chats/%1/messages"_s.arg(chatID);
    const HttpTransport::Headers headers{{u"Idempotency-Key"_s, idempotencyKey}};
    const QByteArray answer = co_await api.post(path, body, headers);
    const auto object = json::parseObject(answer);
    if (!object || !json::object(*object, u"message"))
        throw ApiError::api(500, u"Invalid response"_s);
}

} // namespace orvane
