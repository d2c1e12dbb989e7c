// SPDX-License-Identifier: MIT
#pragma once

#include <QCoroTask>

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace orvane {

class MessengerAPI;

/// What the engines need of the home server. Operations throw what the request threw. Main thread.
class PreKeyServer {
public:
    virtual ~PreKeyServer() = default;

    /// All keys in base64. Gives how many one-time keys were stored.
    virtual QCoro::Task<qint64> uploadPreKeys(const QString &userID, const QString &identityKey,
                                              const QString &signedPreKey, const QString &signature,
                                              const QStringList &oneTimeKeys) = 0;
    virtual QCoro::Task<qint64> checkPreKeyCount(const QString &userID) = 0;

protected:
    PreKeyServer() = default;
    PreKeyServer(const PreKeyServer &) = default;
    PreKeyServer &operator=(const PreKeyServer &) = default;
};

class ZkServer {
public:
    virtual ~ZkServer() = default;

    virtual QCoro::Task<void> uploadZkIdentity(const QJsonObject &publicKeyJWK) = 0;
    virtual QCoro::Task<QJsonObject> fetchZkIdentity(const QString &userId) = 0;
    virtual QCoro::Task<QJsonObject> createZkGroup(const QStringList &participantIds,
                                                   const QJsonObject &encryptedMeta,
                                                   const QJsonObject &wrappedKeys) = 0;
    virtual QCoro::Task<QJsonObject> fetchZkSenderKey(const QString &chatId) = 0;

protected:
    ZkServer() = default;
    ZkServer(const ZkServer &) = default;
    ZkServer &operator=(const ZkServer &) = default;
};

/// Both over the REST interface, which outlives it.
class RestKeyServer : public PreKeyServer, public ZkServer {
public:
    explicit RestKeyServer(MessengerAPI &api)
        : m_api(api) {}

    /// Over the shared interface.
    static RestKeyServer &shared();

    QCoro::Task<qint64> uploadPreKeys(const QString &userID, const QString &identityKey,
                                      const QString &signedPreKey, const QString &signature,
                                      const QStringList &oneTimeKeys) override;
    QCoro::Task<qint64> checkPreKeyCount(const QString &userID) override;
    QCoro::Task<void> uploadZkIdentity(const QJsonObject &publicKeyJWK) override;
    QCoro::Task<QJsonObject> fetchZkIdentity(const QString &userId) override;
    QCoro::Task<QJsonObject> createZkGroup(const QStringList &participantIds,
                                           const QJsonObject &encryptedMeta,
                                           const QJsonObject &wrappedKeys) override;
    QCoro::Task<QJsonObject> fetchZkSenderKey(const QString &chatId) override;

private:
    MessengerAPI &m_api;
};

} // namespace orvane
