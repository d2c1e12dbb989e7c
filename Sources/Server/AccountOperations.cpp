// SPDX-License-Identifier: MIT
#include "Server/MessengerAPI.h"

#include "Server/OperationParts.h"
#include "Server/ResultConventions.h"

// Contacts, keys, devices, the account.
namespace orvane {

using namespace operation;
using namespace Qt::StringLiterals;

namespace {

QCoro::Task<QString> statusOf(QCoro::Task<QByteArray> answer) {
    return valueUnder(std::move(answer), u"status"_s, &json::text, u"error"_s);
}

QCoro::Task<std::optional<PreKeyBundle>> bundleOf(QCoro::Task<QByteArray> answer) {
    const QJsonObject object = co_await mapOrEmpty(std::move(answer));
    co_return PreKeyBundle::from(object);
}

} // namespace

QCoro::Task<QList<QJsonObject>> MessengerAPI::fetchContacts(const QString &userID) {
    return listUnder(get(messenger(u"/contacts?user_id=%1", userID)), u"contacts"_s);
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::getContactRequests(const QString &userID) {
    return listUnder(get(messenger(u"/contacts/requests?user_id=%1", userID)), u"requests"_s);
}

QCoro::Task<QString> MessengerAPI::sendContactRequest(const QString &from, const QString &to) {
    return statusOf(
        post(messenger(u"/contacts/request"), {{u"user_id"_s, userId(from)}, {u"contact_id"_s, userId(to)}}));
}

QCoro::Task<QString> MessengerAPI::handleContactRequest(const QString &from, const QString &contactID,
                                                        const QString &action) {
    return statusOf(post(messenger(u"/contacts/requests/%1", contactID),
                         {{u"user_id"_s, userId(from)}, {u"action"_s, action}}));
}

QCoro::Task<void> MessengerAPI::addContact(const ContactRecord &contact) {
    return none(post(messenger(u"/contacts/add"), {{u"phone_hash"_s, contact.phoneHash},
                                                   {u"display_name"_s, contact.displayName},
                                                   {u"from_address_book"_s, contact.isFromAddressBook},
                                                   {u"organization"_s, orNull(contact.organization)},
                                                   {u"avatar_hash"_s, orNull(contact.avatarHash)}}));
}

QCoro::Task<qint64> MessengerAPI::uploadPreKeys(const QString &userID, const QString &identityKey,
                                                const QString &signedPreKey, const QString &signature,
                                                const QStringList &oneTimeKeys) {
    return valueUnder(
        post(messenger(u"/keys/upload"), {{u"user_id"_s, userId(userID)},
                                          {u"identity_key"_s, identityKey},
                                          {u"signed_pre_key"_s, signedPreKey},
                                          {u"signed_pre_key_signature"_s, signature},
                                          {u"one_time_pre_keys"_s, QJsonArray::fromStringList(oneTimeKeys)}}),
        u"uploaded"_s, &json::integer, qint64(0));
}

QCoro::Task<std::optional<PreKeyBundle>> MessengerAPI::fetchPreKeyBundle(const QString &userID) {
    return bundleOf(get(messenger(u"/keys/%1", userID)));
}

QCoro::Task<qint64> MessengerAPI::checkPreKeyCount(const QString &userID) {
    return valueUnder(get(messenger(u"/keys/%1/count", userID)), u"pre_keys_remaining"_s, &json::integer,
                      qint64(0));
}

QCoro::Task<void> MessengerAPI::registerDevice() {
    return none(post(messenger(u"/devices/register"), toJson(session().devicePayload())));
}

QCoro::Task<QList<QJsonObject>> MessengerAPI::listDevices() {
    return listUnder(get(messenger(u"/devices")), u"devices"_s);
}

QCoro::Task<void> MessengerAPI::revokeDevice(const QString &id) {
    return none(del(messenger(u"/devices/%1", id), {}));
}

QCoro::Task<QJsonObject> MessengerAPI::pullDeviceSync(const std::optional<qint64> &since) {
    const qint64 from = since.value_or(session().syncCursor.value());
    return mapOrEmpty(get(messenger(u"/sync?since=%1", QString::number(from))));
}

QCoro::Task<void> MessengerAPI::deleteUserAccount(const QString &password) {
    return none(del(messenger(u"/users/me"), {{u"password"_s, password}}));
}

QCoro::Task<QJsonObject> MessengerAPI::createEncryptedBackup(const QString &password) {
    return mapOrEmpty(post(messenger(u"/users/me/backup"), {{u"password"_s, password}}));
}

} // namespace orvane
