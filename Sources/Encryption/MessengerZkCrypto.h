// SPDX-License-Identifier: MIT
#pragma once

#include "Encryption/KeyServers.h"
#include "Encryption/ZkForms.h"
#include "Platform/SecretStore.h"
#include "Platform/UserDefaults.h"

#include <QCoroTask>

#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace orvane {

/// The key of a zero-knowledge group, shared by whoever works with it.
using SymmetricKey = std::shared_ptr<const SecretBytes>;

/// The zero-knowledge engine: groups whose title, members and messages the server can't read. The object and
/// its collaborators outlive its tasks. Main thread.
///
///     a group's key:  unknown --(createZkGroup)--------------------------> known
///                     unknown --(loadGroupKey: store, defaults, server)--> known
///
/// The identity key is made once and then stays; group keys never change.
class MessengerZkCrypto {
public:
    /// Loads the identity key, or makes and stores one; a store that fails is not reported.
    MessengerZkCrypto(SecretStore &store, UserDefaults &defaults, ZkServer &server);

    static MessengerZkCrypto &shared();

    /// Titles of the groups made in this process, by chat id.
    QHash<QString, QString> titleCache;

    /// Tells the server the own public key, makes a group with a fresh key wrapped for every member, and
    /// gives the server's answer. The first error of any step is thrown.
    QCoro::Task<QJsonObject> createZkGroup(QString name, QStringList participantIds, QString myUserId);

    /// From memory, the store, an entry that an earlier version left in the defaults, or the server. Throws
    /// ZkCryptoError, CipherError and what the request threw.
    QCoro::Task<SymmetricKey> loadGroupKey(QString chatId);

    /// The text of a message object of a zero-knowledge group; absent when it is none or can't be read.
    QCoro::Task<std::optional<QString>> decryptMessage(QString chatId, QJsonObject raw);

    /// A group's key for one member, whose public key is fetched.
    QCoro::Task<QJsonObject> wrapSenderKey(SymmetricKey senderKey, QString targetUserId);
    SymmetricKey unwrapSenderKey(const QJsonObject &wrapped) const;

    P256PublicKey publicKey() const { return m_privKey.publicKey(); }

private:
    static P256PrivateKey loadOrCreateKey(SecretStore &store);
    SymmetricKey storedGroupKey(const QString &chatId);
    void saveGroupKey(const SecretBytes &key, const QString &chatId);

    SecretStore &m_store;
    UserDefaults &m_defaults;
    ZkServer &m_server;
    P256PrivateKey m_privKey;
    QHash<QString, SymmetricKey> m_groupKeys;
};

} // namespace orvane
