// SPDX-License-Identifier: MIT
#include "Session/MessengerSession.h"

#include "Base/Json.h"
#include "Base/Task.h"
#include "Platform/ChosenSecretStore.h"

#include <QUuid>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString newDeviceId() {
    const QString hex = QUuid::createUuid().toString(QUuid::WithoutBraces).remove(u'-');
    return u"dev_"_s + hex.left(16).toLower();
}

} // namespace

MessengerSession::MessengerSession(std::unique_ptr<SecretStore> store,
                                   std::unique_ptr<UserDefaults> userDefaults, QObject *parent)
    : QObject(parent)
    , keychain(std::move(store))
    , defaults(std::move(userDefaults)) {
    restoreDevice();
    restoreUser();
    if (isLoggedIn)
        return;
    // What nobody could delete at a sign-out must not sign in again by itself.
    const auto waiting =
        connect(&keychain.store(), &SecretStore::opened, this, &MessengerSession::restoreUser);
    connect(
        this, &MessengerSession::isLoggedInChanged, this, [waiting] { disconnect(waiting); },
        Qt::SingleShotConnection);
}

MessengerSession &MessengerSession::shared() {
    static auto *session =
        new MessengerSession(ChosenSecretStore::forThisDesktop(), std::make_unique<UserDefaults>());
    return *session;
}

QMap<QString, QString> MessengerSession::devicePayload() const {
    return {{u"device_id"_s, deviceId}, {u"device_name"_s, u"Mac"_s}, {u"platform"_s, u"macos"_s}};
}

QString MessengerSession::userIdText() const {
    return QString::number(currentUserId.value().value_or(0));
}

void MessengerSession::adoptDeviceId(const QString &id) {
    deviceId = id;
    defaults->set(u"ot_device_id"_s, id);
}

void MessengerSession::adoptSyncCursor(qint64 cursor) {
    syncCursor = cursor;
    defaults->set(u"ot_sync_cursor"_s, cursor);
}

void MessengerSession::adoptFederation(const QJsonObject &answer) {
    if (const auto id = json::text(answer, u"matrix_id"))
        matrixId = id;
    m_features = announcedFeatures(answer);
}

void MessengerSession::logout() {
    dropped([this] { keychain.clear(); },
            "signing out must not fail, and the next sign-in overwrites the items");
    token.reset();
    currentUserId = std::nullopt;
    currentUsername = std::nullopt;
    currentDisplayName = std::nullopt;
    matrixId = std::nullopt;
    m_features.clear();
    // Last, so that whoever follows the switch finds a session without a user.
    isLoggedIn = false;
}

void MessengerSession::restoreDevice() {
    const QString stored = defaults->text(u"ot_device_id"_s).value_or(QString());
    if (stored.isEmpty())
        adoptDeviceId(newDeviceId());
    else
        deviceId = stored;
    syncCursor = defaults->integer(u"ot_sync_cursor"_s);
}

void MessengerSession::restoreUser() {
    dropped([this] { readUser(); },
            "a store that can't be read counts as an empty one, and the person signs in again");
}

void MessengerSession::readUser() {
    const auto storedToken = keychain.getToken();
    if (!storedToken)
        return;
    const auto storedUserId = keychain.getUserId();
    if (!storedUserId)
        return;
    const auto storedUsername = keychain.getUsername();
    if (!storedUsername)
        return;
    token = storedToken;
    currentUserId = storedUserId;
    currentUsername = storedUsername;
    isLoggedIn = true;
    matrixId = defaults->text(u"ot_matrix_id"_s);
}

} // namespace orvane
