#include "Server/MessengerAPI.h"

#include "Model/ChatListAnswer.h"
#include "Server/ResultConventions.h"
#include "Session/OrvaneTalkEndpoint.h"

namespace orvane {

namespace {

QCoro::Task<QList<MessengerChat>> decodeChats(QCoro::Task<QByteArray> answer) {
    const QByteArray bytes = co_await answer;
    const CR decoded = CR::decode(bytes);
    const QDateTime now = QDateTime::currentDateTime();
    QList<MessengerChat> chats;
    chats.reserve(decoded.chats.size());
    for (const AC &chat : decoded.chats)
        chats.append(chat.toChat(now));
    co_return chats;
}

QJsonObject toJson(const QMap<QString, QString> &map) {
    QJsonObject object;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        object.insert(entry.key(), entry.value());
    return object;
}

} // namespace

MessengerAPI &MessengerAPI::shared() {
    static auto *api = new MessengerAPI(OrvaneTalkEndpoint::baseURL(), MessengerSession::shared());
    return *api;
}

QCoro::Task<QList<MessengerChat>> MessengerAPI::fetchChats() {
    return decodeChats(get(QStringLiteral("/api/messenger/chats")));
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::fetchMessages(const QString &chatID,
                                                            const std::optional<QString> &before, int limit) {
    QString path =
        QStringLiteral("/api/messenger/chats/%1/messages?limit=%2").arg(chatID, QString::number(limit));
    if (before)
        path += QStringLiteral("&before=") + *before;
    return listUnder(get(path), QStringLiteral("messages"));
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::fetchContacts(const QString &userID) {
    return listUnder(get(QStringLiteral("/api/messenger/contacts?user_id=") + userID),
                     QStringLiteral("contacts"));
}

QCoro::Task<void> MessengerAPI::registerDevice() {
    return none(post(QStringLiteral("/api/messenger/devices/register"), toJson(session().devicePayload())));
}

QCoro::Task<QJsonObject> MessengerAPI::pullDeviceSync(const std::optional<qint64> &since) {
    const qint64 from = since.value_or(session().syncCursor.value());
    return mapOrEmpty(get(QStringLiteral("/api/messenger/sync?since=%1").arg(from)));
}

} // namespace orvane
