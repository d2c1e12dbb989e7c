// SPDX-License-Identifier: MIT
#include "Server/MessengerAPI.h"

#include "Server/OperationParts.h"
#include "Server/ResultConventions.h"

// What the server's AI computes, and the agents of a chat.
namespace orvane {

using namespace operation;
using namespace Qt::StringLiterals;

namespace {

QCoro::Task<ChatAgents> agentsOf(QCoro::Task<QByteArray> answer) {
    const QJsonObject object = co_await mapOrEmpty(std::move(answer));
    co_return ChatAgents{json::objects(object, u"agents"),
                         json::texts(object, u"presets").value_or(QStringList())};
}

} // namespace

QCoro::Task<QJsonObject> MessengerAPI::smartReply(const QList<Texts> &messages, const QString &userID) {
    return mapOr500(post(u"/api/chat/smart-reply"_s,
                         {{u"messages"_s, toJson(messages)}, {u"user_id"_s, userId(userID)}}));
}

QCoro::Task<QJsonObject> MessengerAPI::summarizeChat(const QString &chatID, const QString &period,
                                                     const QString &userID) {
    return mapOr500(post(u"/api/chat/summarize"_s,
                         {{u"chat_id"_s, chatID}, {u"period"_s, period}, {u"user_id"_s, userId(userID)}}));
}

QCoro::Task<QJsonObject> MessengerAPI::personaReply(const QString &chatId, const QList<Texts> &messages) {
    return mapOrEmpty(
        post(u"/api/chat/persona-reply"_s, {{u"chat_id"_s, chatId}, {u"messages"_s, toJson(messages)}}));
}

QCoro::Task<QJsonObject> MessengerAPI::aiAgentChat(const QString &message, const QString &chatID,
                                                   const QString &userID) {
    return mapOr500(post(u"/api/chat/agent"_s,
                         {{u"message"_s, message}, {u"chat_id"_s, chatID}, {u"user_id"_s, userId(userID)}}));
}

QCoro::Task<QJsonObject> MessengerAPI::memoryQuery(const QString &query,
                                                   const std::optional<QString> &chatId) {
    QJsonObject body{{u"query"_s, query}};
    if (chatId)
        body.insert(u"chat_id"_s, *chatId);
    return mapOrEmpty(post(u"/api/chat/memory"_s, body));
}

QCoro::Task<QJsonObject> MessengerAPI::discoverThread(const QString &query) {
    return mapOrEmpty(post(u"/api/chat/threads/discover"_s, {{u"query"_s, query}}));
}

QCoro::Task<ChatAgents> MessengerAPI::listChatAgents(const QString &chatId) {
    return agentsOf(get(messenger(u"/chats/%1/agents", chatId)));
}

QCoro::Task<void> MessengerAPI::addChatAgent(const QString &chatId, const QString &role) {
    return none(post(messenger(u"/chats/%1/agents", chatId), {{u"role"_s, role}}));
}

QCoro::Task<void> MessengerAPI::removeChatAgent(const QString &chatId, const QString &agentId) {
    return none(del(messenger(u"/chats/%1/agents/%2", chatId, agentId), {}));
}

} // namespace orvane
