// SPDX-License-Identifier: MIT
#include "Server/MessengerAPI.h"

#include "Model/ChatListAnswer.h"
#include "Server/OperationParts.h"
#include "Server/ResultConventions.h"

// Chats, messages, search, folders, push.
namespace orvane {

using namespace operation;
using namespace Qt::StringLiterals;

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

QCoro::Task<bool> isStarStatus(QCoro::Task<QByteArray> answer) {
    const QJsonObject object = co_await mapOrEmpty(std::move(answer));
    const auto status = json::text(object, u"status");
    co_return status == u"starred" || status == u"unstarred";
}

QCoro::Task<QList<ChatFolder>> foldersOf(QCoro::Task<QByteArray> answer) {
    const QList<QJsonObject> objects = co_await listUnder(std::move(answer), u"folders"_s);
    QList<ChatFolder> folders;
    for (const QJsonObject &object : objects)
        if (const auto folder = ChatFolder::fromAPI(object))
            folders.append(*folder);
    co_return folders;
}

QCoro::Task<std::optional<ChatFolder>> folderOf(QCoro::Task<QByteArray> answer) {
    const QJsonObject object = co_await mapOrEmpty(std::move(answer));
    const auto folder = json::object(object, u"folder");
    co_return folder ? ChatFolder::fromAPI(*folder) : std::nullopt;
}

} // namespace

QCoro::Task<QList<MessengerChat>> MessengerAPI::fetchChats() {
    return decodeChats(get(messenger(u"/chats")));
}

QCoro::Task<QJsonObject> MessengerAPI::createChat(const QString &userID, const QString &type,
                                                  const std::optional<QString> &title,
                                                  const QStringList &participantIDs) {
    return mapOr500(post(messenger(u"/chats"), {{u"user_id"_s, userId(userID)},
                                                {u"type"_s, type},
                                                {u"title"_s, orNull(title)},
                                                {u"participants"_s, userIds(participantIDs)}}));
}

QCoro::Task<QJsonObject> MessengerAPI::createChannel(const QString &title, const QString &userID) {
    return mapOr500(post(messenger(u"/channels"), {{u"title"_s, title}, {u"user_id"_s, userId(userID)}}));
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::listChannels(const QString &userID) {
    return listUnder(get(messenger(u"/channels?user_id=%1", userID)), u"channels"_s);
}

QCoro::Task<QJsonObject> MessengerAPI::getOrCreateSavedChat(const QString &userID) {
    return mapOr500(get(messenger(u"/saved?user_id=%1", userID)));
}

QCoro::Task<QJsonObject> MessengerAPI::createChatInvite(const QString &chatId, int expiresHours) {
    return mapOrEmpty(post(messenger(u"/chats/%1/invite", chatId), {{u"expires_hours"_s, expiresHours}}));
}

QCoro::Task<QJsonObject> MessengerAPI::createFederatedChat(const QString &title,
                                                           const QStringList &localParticipantIDs,
                                                           const QStringList &remoteMX) {
    return mapOrEmpty(post(messenger(u"/chats/federated"),
                           {{u"title"_s, title},
                            {u"local_participants"_s, onlyUserIds(localParticipantIDs)},
                            {u"remote_participants"_s, QJsonArray::fromStringList(remoteMX)}}));
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::fetchMessages(const QString &chatID,
                                                            const std::optional<QString> &before, int limit) {
    QString path = messenger(u"/chats/%1/messages?limit=%2", chatID, QString::number(limit));
    if (before)
        path += u"&before="_s + *before;
    return listUnder(get(path), u"messages"_s);
}

QCoro::Task<QJsonObject> MessengerAPI::editMessage(const QString &messageID, const QString &userID,
                                                   const QString &newContent) {
    return mapOr500(patch(messenger(u"/messages/%1", messageID),
                          {{u"user_id"_s, userId(userID)}, {u"content"_s, newContent}}));
}

QCoro::Task<void> MessengerAPI::deleteMessage(const QString &messageID, const QString &userID) {
    return none(del(messenger(u"/messages/%1", messageID), {{u"user_id"_s, userId(userID)}}));
}

QCoro::Task<void> MessengerAPI::pinMessage(const QString &chatID, const QString &messageID) {
    return none(post(messenger(u"/chats/%1/messages/pin", chatID), {{u"message_id"_s, messageID}}));
}

QCoro::Task<void> MessengerAPI::unpinMessage(const QString &chatID, const QString &messageID) {
    return none(post(messenger(u"/chats/%1/messages/unpin", chatID), {{u"message_id"_s, messageID}}));
}

QCoro::Task<QJsonObject> MessengerAPI::addReaction(const QString &messageID, const QString &emoji) {
    return mapOrEmpty(post(messenger(u"/messages/%1/reactions", messageID), {{u"emoji"_s, emoji}}));
}

QCoro::Task<bool> MessengerAPI::toggleStar(const QString &messageID, const QString &userID, bool isStarred) {
    const QString path = messenger(u"/messages/%1/star", messageID);
    const QJsonObject body{{u"user_id"_s, userId(userID)}};
    return isStarStatus(isStarred ? del(path, body) : post(path, body));
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::fetchStarredMessages(const QString &userID) {
    return listUnder(get(messenger(u"/starred?user_id=%1", userID)), u"messages"_s);
}

QCoro::Task<QJsonObject> MessengerAPI::translateMessage(const QString &messageID, const QString &targetLang) {
    return mapOr500(post(messenger(u"/messages/%1/translate", messageID), {{u"target_lang"_s, targetLang}}));
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::fetchMentions(const QString &userID) {
    return listUnder(get(messenger(u"/mentions?user_id=%1", userID)), u"mentions"_s);
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::searchUsers(const QString &query, const QString &userID) {
    return listUnder(get(messenger(u"/users/search?q=%1&user_id=%2", inQuery(query), userID)), u"users"_s);
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::globalSearch(const QString &query, const QString &userID) {
    return listUnder(get(messenger(u"/search/global?q=%1&user_id=%2", inQuery(query), userID)),
                     u"messages"_s);
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::semanticSearch(const QString &query, const QString &userID,
                                                             const std::optional<QString> &chatID) {
    QJsonObject body{{u"query"_s, query}, {u"user_id"_s, userId(userID)}};
    if (chatID)
        body.insert(u"chat_id"_s, *chatID);
    return listUnder(post(messenger(u"/search/semantic"), body), u"results"_s);
}

QCoro::Task<QList<ChatFolder>> MessengerAPI::listChatFolders() {
    return foldersOf(get(messenger(u"/folders")));
}

QCoro::Task<std::optional<ChatFolder>> MessengerAPI::createChatFolder(const QString &name,
                                                                      const QString &icon) {
    return folderOf(post(messenger(u"/folders"), {{u"name"_s, name}, {u"icon"_s, icon}}));
}

QCoro::Task<void> MessengerAPI::manageFolderChat(const QString &folderId, const QString &chatId,
                                                 const QString &action) {
    return none(
        post(messenger(u"/folders/%1/chats", folderId), {{u"chat_id"_s, chatId}, {u"action"_s, action}}));
}

QCoro::Task<void> MessengerAPI::registerPushToken(const QString &deviceToken, const QString &userID,
                                                  const QString &platform) {
    return none(
        post(messenger(u"/push/register"),
             {{u"user_id"_s, userId(userID)}, {u"device_token"_s, deviceToken}, {u"platform"_s, platform}}));
}

} // namespace orvane
