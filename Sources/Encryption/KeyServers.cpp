// SPDX-License-Identifier: MIT
#include "Encryption/KeyServers.h"

#include "Server/MessengerAPI.h"

namespace orvane {

RestKeyServer &RestKeyServer::shared() {
    static auto *server = new RestKeyServer(MessengerAPI::shared());
    return *server;
}

QCoro::Task<qint64> RestKeyServer::uploadPreKeys(const QString &userID, const QString &identityKey,
                                                 const QString &signedPreKey, const QString &signature,
                                                 const QStringList &oneTimeKeys) {
    return m_api.uploadPreKeys(userID, identityKey, signedPreKey, signature, oneTimeKeys);
}

QCoro::Task<qint64> RestKeyServer::checkPreKeyCount(const QString &userID) {
    return m_api.checkPreKeyCount(userID);
}

QCoro::Task<void> RestKeyServer::uploadZkIdentity(const QJsonObject &publicKeyJWK) {
    return m_api.uploadZkIdentity(publicKeyJWK);
}

QCoro::Task<QJsonObject> RestKeyServer::fetchZkIdentity(const QString &userId) {
    return m_api.fetchZkIdentity(userId);
}

QCoro::Task<QJsonObject> RestKeyServer::createZkGroup(const QStringList &participantIds,
                                                      const QJsonObject &encryptedMeta,
                                                      const QJsonObject &wrappedKeys) {
    return m_api.createZkGroup(participantIds, encryptedMeta, wrappedKeys);
}

QCoro::Task<QJsonObject> RestKeyServer::fetchZkSenderKey(const QString &chatId) {
    return m_api.fetchZkSenderKey(chatId);
}

} // namespace orvane
