// SPDX-License-Identifier: MIT
#include "Encryption/PreKeyManager.h"

#include "Base/LogLine.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr int batch = 100;
constexpr qint64 fewest = 20;

QString base64(const QByteArray &bytes) {
    return QString::fromLatin1(bytes.toBase64());
}

} // namespace

PreKeyManager::PreKeyManager(MessengerCrypto &crypto, PreKeyServer &server)
    : m_crypto(crypto)
    , m_server(server) {}

PreKeyManager &PreKeyManager::shared() {
    static auto *manager = new PreKeyManager(MessengerCrypto::shared(), RestKeyServer::shared());
    return *manager;
}

QCoro::Task<void> PreKeyManager::uploadIfNeeded(QString userID) {
    if (!m_crypto.idPriv())
        co_return;
    const QString identity = base64(m_crypto.idPriv()->publicKey());
    auto signedPreKey = m_crypto.generateSignedPreKey();
    if (!signedPreKey)
        co_return;
    signedPreKeyPriv = std::move(signedPreKey->privateKey);
    QStringList oneTimeKeys;
    for (const QByteArray &key : m_crypto.generateOneTimePreKeys(batch))
        oneTimeKeys.append(base64(key));
    try {
        const qint64 stored = co_await m_server.uploadPreKeys(
            userID, identity, base64(signedPreKey->publicKey), base64(signedPreKey->signature), oneTimeKeys);
        m_crypto.preKeysRemaining = stored;
        isUploaded = true;
        logLine(u"🔑 PreKeyManager: uploaded %1 one-time pre-keys"_s.arg(stored));
    } catch (const std::exception &error) {
        logLine(u"⚠️ PreKeyManager: upload failed — "_s + localizedDescription(error));
    }
}

QCoro::Task<void> PreKeyManager::replenishIfNeeded(QString userID) {
    qint64 remaining = 0;
    try {
        remaining = co_await m_server.checkPreKeyCount(userID);
    } catch (const std::exception &error) {
        logLine(u"⚠️ PreKeyManager: count check failed — "_s + localizedDescription(error));
        co_return;
    }
    m_crypto.preKeysRemaining = remaining;
    if (remaining >= fewest)
        co_return;
    logLine(u"🔑 PreKeyManager: only %1 pre-keys left, replenishing..."_s.arg(remaining));
    co_await uploadIfNeeded(userID);
}

} // namespace orvane
