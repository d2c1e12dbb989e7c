#include "Conversation/PostMessage.h"

#include "Base/Json.h"
#include "Server/ApiError.h"

namespace orvane {

QCoro::Task<void> postMessage(MessengerAPI &api, QString chatID, QJsonObject body, QString idempotencyKey) {
    const QString path = QStringLiteral("/api/messenger/chats/%1/messages").arg(chatID);
    const HttpTransport::Headers headers{{QStringLiteral("Idempotency-Key"), idempotencyKey}};
    const QByteArray answer = co_await api.post(path, body, headers);
    const auto object = json::parseObject(answer);
    if (!object || !json::object(*object, u"message"))
        throw ApiError::api(500, QStringLiteral("Invalid response"));
}

} // namespace orvane
