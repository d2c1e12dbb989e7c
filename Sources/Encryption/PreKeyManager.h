// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Encryption/KeyServers.h"
#include "Encryption/MessengerCrypto.h"

#include <QCoroTask>

#include <optional>

namespace orvane {

/// Keeps the server stocked with the keys that others need to open a session with this user. It never throws:
/// failures end in a log line. The object and its collaborators outlive its tasks. Main thread.
///
///     not uploaded --(an upload that succeeds)--> uploaded
class PreKeyManager : public QObject {
    Q_OBJECT
    OBSERVABLE(bool, isUploaded)

public:
    PreKeyManager(MessengerCrypto &crypto, PreKeyServer &server);

    static PreKeyManager &shared();

    /// Of the last signed pre-key that was made; lost with the process.
    std::optional<X25519PrivateKey> signedPreKeyPriv;

    /// Uploads a new signed pre-key and 100 one-time keys, each time it is called. Without an identity key
    /// nothing happens.
    QCoro::Task<void> uploadIfNeeded(QString userID);
    /// Uploads when the server has fewer than 20 one-time keys left.
    QCoro::Task<void> replenishIfNeeded(QString userID);

private:
    MessengerCrypto &m_crypto;
    PreKeyServer &m_server;
};

} // namespace orvane
