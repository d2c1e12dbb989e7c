// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Encryption/EncryptedMessage.h"
#include "Encryption/Ratchet.h"
#include "Platform/SecretStore.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>
#include <unordered_map>

namespace orvane {

/// The pairwise end-to-end engine: the user's identity key, a ratchet a chat and a key a group. It knows no
/// server and stores nothing but the identity key. Everything is off until the feature is enabled. Main
/// thread.
///
///     a chat:   no session --(establishSession)--> session --(establishSession)--> another session
///     a group:  no key --(createGroupKey)--> key
///
/// Neither outlives the process. A ratchet is spent step by step: a message that can't be opened has cost one
/// all the same.
class MessengerCrypto : public QObject {
    Q_OBJECT
    OBSERVABLE(bool, isInit)
    /// Of the own identity key; empty until `isInit`.
    OBSERVABLE(QString, fingerprint)
    /// As the server last said.
    OBSERVABLE(qint64, preKeysRemaining)

public:
    /// With `enabled`, `loadOrCreate` runs at once. The store outlives the engine.
    MessengerCrypto(SecretStore &store, bool enabled);

    static MessengerCrypto &shared();

    struct SignedPreKey {
        QByteArray publicKey;
        X25519PrivateKey privateKey;
        QByteArray signature;
    };

    /// The identity key from the store, or a new one, which is then stored. A store that fails is not
    /// reported: the next start makes another key.
    void loadOrCreate();
    /// Null until `loadOrCreate` ran with the feature on.
    const X25519PrivateKey *idPriv() const { return m_idPriv ? &*m_idPriv : nullptr; }

    /// `isInitiator` is not looked at: either end does the same. Throws CryptoError `invalidKey` without an
    /// own key and for keys that aren't 32 bytes, and CipherError; the session of before then stays.
    void establishSession(const QString &chatID, const QByteArray &peerIdentityKey,
                          const QByteArray &peerPreKey, bool isInitiator);
    bool hasSession(const QString &chatID) const { return m_sessions.contains(chatID); }

    /// Throws CryptoError `noSession`, or CipherError.
    EncryptedMessage encrypt(const QString &chatID, const QString &plaintext);
    /// Throws CryptoError `noSession`, or CipherError, and then has spent a step of the chain. Bytes that are
    /// no UTF-8 give the empty text.
    QString decrypt(const QString &chatID, const EncryptedMessage &encrypted);

    bool hasGroupKey(const QString &chatID) const { return m_groupKeys.contains(chatID); }
    /// A new key for the group, sealed for each participant with the session of the group's chat. The first
    /// failure is thrown; the key stays.
    QMap<QString, EncryptedMessage> createGroupKey(const QString &chatID, const QStringList &participantIDs);
    /// Throws CryptoError `noSession` without a key, or CipherError.
    EncryptedMessage encryptGroup(const QString &chatID, const QString &plaintext);
    QString decryptGroup(const QString &chatID, const EncryptedMessage &encrypted);

    /// Absent without an identity key. The signature is a keyed code that only its owner can check.
    std::optional<SignedPreKey> generateSignedPreKey() const;
    /// Raw public keys; the private halves are dropped at once.
    QList<QByteArray> generateOneTimePreKeys(int count) const;

    /// SHA-256 of a raw public key in 16 groups of 4 lower-case hexadecimal digits.
    static QString fp(const QByteArray &publicKey);

private:
    std::optional<X25519PrivateKey> loadKey();
    void saveKey(const X25519PrivateKey &key);
    RS &session(const QString &chatID);
    EncryptedMessage sealNext(const QString &chatID, QByteArrayView plain);
    const SecretBytes &groupKey(const QString &chatID) const;

    SecretStore &m_store;
    bool m_enabled;
    std::optional<X25519PrivateKey> m_idPriv;
    std::unordered_map<QString, RS> m_sessions;
    std::unordered_map<QString, SecretBytes> m_groupKeys;
};

} // namespace orvane
