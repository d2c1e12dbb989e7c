// SPDX-License-Identifier: MIT
#include "Server/MessengerAPI.h"

#include "Server/ApiError.h"
#include "Server/OperationParts.h"
#include "Server/ResultConventions.h"

// Zero-knowledge groups.
namespace orvane {

using namespace operation;
using namespace Qt::StringLiterals;

namespace {

QCoro::Task<QJsonObject> objectUnder(QCoro::Task<QByteArray> answer, QString key) {
    const QJsonObject object = co_await mapOrEmpty(std::move(answer));
    const auto found = json::object(object, key);
    if (!found)
        throw MessengerAPIError::badResponse();
    co_return *found;
}

} // namespace

QCoro::Task<void> MessengerAPI::uploadZkIdentity(const QJsonObject &publicKeyJWK) {
    return none(post(messenger(u"/zk/identity"), {{u"public_key_jwk"_s, publicKeyJWK}}));
}

QCoro::Task<QJsonObject> MessengerAPI::fetchZkIdentity(const QString &userId) {
    return objectUnder(get(messenger(u"/zk/identity/%1", userId)), u"public_key_jwk"_s);
}

QCoro::Task<QJsonObject> MessengerAPI::createZkGroup(const QStringList &participantIds,
                                                     const QJsonObject &encryptedMeta,
                                                     const QJsonObject &wrappedKeys) {
    return mapOrEmpty(post(messenger(u"/chats/zk"), {{u"participants"_s, onlyUserIds(participantIds)},
                                                     {u"encrypted_meta"_s, encryptedMeta},
                                                     {u"wrapped_keys"_s, wrappedKeys}}));
}

QCoro::Task<QJsonObject> MessengerAPI::fetchZkSenderKey(const QString &chatId) {
    return objectUnder(get(messenger(u"/chats/%1/zk/key", chatId)), u"wrapped_key"_s);
}

} // namespace orvane
