// SPDX-License-Identifier: MIT
#include "Encryption/MessengerCrypto.h"

#include "Session/MessengerSession.h"
#include "Session/OrvaneTalkFeatureFlags.h"

#include <QRegularExpression>
#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const auto service = u"com.orvanetalk.messenger"_s;
const auto account = u"com.orvanetalk.messenger.identity"_s;

QString textOf(const SecretBytes &plain) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
    const QString text = decoder(plain.view());
    return decoder.hasError() ? QString() : text;
}

primitives::Box sealWithFreshNonce(const SecretBytes &key, QByteArrayView plain,
                                   QByteArrayView additional = {}) {
    return primitives::seal(key.view(), primitives::randomBytes(primitives::nonceSize), plain, additional);
}

primitives::Box boxOf(const EncryptedMessage &encrypted) {
    return {encrypted.nonce, encrypted.ciphertext, encrypted.tag};
}

} // namespace

MessengerCrypto::MessengerCrypto(SecretStore &store, bool enabled)
    : m_store(store)
    , m_enabled(enabled) {
    loadOrCreate();
}

MessengerCrypto &MessengerCrypto::shared() {
    static auto *crypto = new MessengerCrypto(MessengerSession::shared().keychain.store(),
                                              OrvaneTalkFeatureFlags::experimentalCrypto());
    return *crypto;
}

void MessengerCrypto::loadOrCreate() {
    if (!m_enabled)
        return;
    m_idPriv = loadKey();
    if (!m_idPriv) {
        m_idPriv = X25519PrivateKey::generate();
        saveKey(*m_idPriv);
    }
    fingerprint = fp(m_idPriv->publicKey());
    isInit = true;
}

std::optional<X25519PrivateKey> MessengerCrypto::loadKey() {
    SecretStore::Match match = m_store.copyMatching(service, account);
    auto key = match.status == SecretStatus::success ? X25519PrivateKey::fromRaw(match.data) : std::nullopt;
    wipe(match.data);
    return key;
}

void MessengerCrypto::saveKey(const X25519PrivateKey &key) {
    m_store.remove(service, account);
    QByteArray raw = key.raw().view().toByteArray();
    m_store.add(service, account, u"OrvaneTalk identity key"_s, raw);
    wipe(raw);
}

QString MessengerCrypto::fp(const QByteArray &publicKey) {
    return QString::fromLatin1(primitives::sha256(publicKey).toHex())
        .replace(QRegularExpression(u"(....)(?!$)"_s), u"\\1 "_s);
}

void MessengerCrypto::establishSession(const QString &chatID, const QByteArray &peerIdentityKey,
                                       const QByteArray &peerPreKey, bool) {
    if (!m_idPriv || !X25519PrivateKey::isPublicKey(peerIdentityKey) ||
        !X25519PrivateKey::isPublicKey(peerPreKey))
        throw CryptoError(CryptoError::Case::invalidKey);
    X25519PrivateKey eph = X25519PrivateKey::generate();
    const SecretBytes agreed[] = {m_idPriv->agree(peerPreKey), eph.agree(peerIdentityKey),
                                  eph.agree(peerPreKey)};
    RS state;
    state.chatID = chatID;
    state.rootKey = SecretBytes(3 * primitives::keySize);
    uchar *next = state.rootKey.data();
    for (const SecretBytes &secret : agreed)
        next = std::copy_n(secret.data(), secret.size(), next);
    state.ourEph = std::move(eph);
    ratchet::advance(m_sessions[chatID] = std::move(state));
}

EncryptedMessage MessengerCrypto::encrypt(const QString &chatID, const QString &plaintext) {
    return sealNext(chatID, plaintext.toUtf8());
}

EncryptedMessage MessengerCrypto::sealNext(const QString &chatID, QByteArrayView plain) {
    RS &state = session(chatID);
    if (!state.sendCK)
        throw CryptoError(CryptoError::Case::noSession);
    ratchet::ChainStep step = ratchet::derive(*state.sendCK);
    state.sendCK = std::move(step.nextKey);
    const qint64 number = state.msgNum++;
    primitives::Box box = sealWithFreshNonce(step.messageKey, plain, QByteArray::number(number));
    std::optional<QByteArray> ephemeral;
    if (state.ourEph)
        ephemeral = state.ourEph->publicKey();
    return {std::move(box.ciphertext), std::move(box.nonce), std::move(box.tag), number, ephemeral};
}

QString MessengerCrypto::decrypt(const QString &chatID, const EncryptedMessage &encrypted) {
    RS &state = session(chatID);
    // The key that came is not mixed in: it only says that a root step is due.
    if (encrypted.ephemeralKey && X25519PrivateKey::isPublicKey(*encrypted.ephemeralKey))
        ratchet::advance(state);
    const std::optional<SecretBytes> &chain = state.receiveCK ? state.receiveCK : state.sendCK;
    if (!chain)
        throw CryptoError(CryptoError::Case::noSession);
    ratchet::ChainStep step = ratchet::derive(*chain);
    state.receiveCK = std::move(step.nextKey);
    const QByteArray number = QByteArray::number(encrypted.messageNumber.value_or(0));
    return textOf(primitives::open(step.messageKey.view(), boxOf(encrypted), number));
}

QMap<QString, EncryptedMessage> MessengerCrypto::createGroupKey(const QString &chatID,
                                                                const QStringList &participantIDs) {
    const SecretBytes &key = m_groupKeys[chatID] = primitives::randomKey();
    const SecretBytes encoded = primitives::base64(key);
    QMap<QString, EncryptedMessage> sealed;
    for (const QString &participant : participantIDs)
        sealed.insert(participant, sealNext(chatID, encoded.view()));
    return sealed;
}

EncryptedMessage MessengerCrypto::encryptGroup(const QString &chatID, const QString &plaintext) {
    primitives::Box box = sealWithFreshNonce(groupKey(chatID), plaintext.toUtf8());
    return {std::move(box.ciphertext), std::move(box.nonce), std::move(box.tag), std::nullopt, std::nullopt};
}

QString MessengerCrypto::decryptGroup(const QString &chatID, const EncryptedMessage &encrypted) {
    return textOf(primitives::open(groupKey(chatID).view(), boxOf(encrypted)));
}

std::optional<MessengerCrypto::SignedPreKey> MessengerCrypto::generateSignedPreKey() const {
    if (!m_idPriv)
        return std::nullopt;
    X25519PrivateKey key = X25519PrivateKey::generate();
    const QByteArray publicKey = key.publicKey();
    const QByteArray signature =
        primitives::hmacSha256(m_idPriv->raw().view(), {publicKey}).view().toByteArray();
    return SignedPreKey{publicKey, std::move(key), signature};
}

QList<QByteArray> MessengerCrypto::generateOneTimePreKeys(int count) const {
    if (count < 0)
        qFatal("A negative number of keys was asked for.");
    QList<QByteArray> keys;
    keys.reserve(count);
    while (keys.size() < count)
        keys.append(X25519PrivateKey::generate().publicKey());
    return keys;
}

RS &MessengerCrypto::session(const QString &chatID) {
    const auto found = m_sessions.find(chatID);
    if (found == m_sessions.end())
        throw CryptoError(CryptoError::Case::noSession);
    return found->second;
}

const SecretBytes &MessengerCrypto::groupKey(const QString &chatID) const {
    const auto found = m_groupKeys.find(chatID);
    if (found == m_groupKeys.end())
        throw CryptoError(CryptoError::Case::noSession);
    return found->second;
}

} // namespace orvane
