// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Platform/UserDefaults.h"
#include "Session/MessengerKeychain.h"
#include "Session/ServerFeatures.h"

#include <QMap>
#include <QObject>

#include <memory>
#include <optional>

namespace orvane {

/// Who is signed in on this machine, and as which device. Its creation restores the last sign-in from the
/// secret store; whatever is missing or unreadable there means signed out, without a word. A store that opens
/// only later gives the sign-in then, unless somebody has signed in meanwhile. Main thread.
///
///     signed out --(AuthView)--> signed in --(logout)--> signed out
class MessengerSession : public QObject {
    Q_OBJECT
    OBSERVABLE(bool, isLoggedIn)
    OBSERVABLE(std::optional<qint64>, currentUserId)
    OBSERVABLE(std::optional<QString>, currentUsername)
    /// Known from a sign-in only: absent after a restart.
    OBSERVABLE(std::optional<QString>, currentDisplayName)
    /// The identity of this installation; survives a logout.
    OBSERVABLE(QString, deviceId)
    /// Position in the server's device log; survives a logout.
    OBSERVABLE(qint64, syncCursor)
    OBSERVABLE(qint64, maxDevices, 4)
    OBSERVABLE(std::optional<QString>, matrixId)

public:
    MessengerSession(std::unique_ptr<SecretStore> store, std::unique_ptr<UserDefaults> userDefaults,
                     QObject *parent = nullptr);

    /// The one of this process, over the desktop's secret store and the user's defaults.
    static MessengerSession &shared();

    /// The bearer token; absent while signed out.
    std::optional<QString> token;
    MessengerKeychain keychain;

    /// `device_id`, `device_name` and `platform`, as every sign-in and device registration sends them.
    QMap<QString, QString> devicePayload() const;

    /// The current user's id in decimal text, "0" while there is none.
    QString userIdText() const;

    /// These two also write the user default behind the field.
    void adoptDeviceId(const QString &id);
    void adoptSyncCursor(qint64 cursor);

    /// From the server's answer about the federation: the user's id there, if it is told, and what the server
    /// announces.
    void adoptFederation(const QJsonObject &answer);
    /// Whether the home server has announced it. Nothing is, before the first answer.
    bool offers(ServerFeature feature) const { return m_features.contains(feature); }

    /// Forgets the user. A store that refuses to delete is not reported.
    void logout();

private:
    void restoreDevice();
    void restoreUser();
    void readUser();

    std::unique_ptr<UserDefaults> defaults;
    ServerFeatures m_features;
};

} // namespace orvane
