// SPDX-License-Identifier: MIT
#include "Encryption/MessengerZkCrypto.h"

#include "Base/Json.h"
#include "Base/Task.h"
#include "Session/MessengerSession.h"
#include "Session/UserIdText.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const auto service = u"com.orvanetalk.messenger"_s;
const auto identityAccount = u"com.orvanetalk.zk.identity"_s;

QString groupAccount(const QString &chatId) {
    return u"com.orvanetalk.zk.group."_s + chatId;
}

QString legacyKey(const QString &chatId) {
    return u"ot_zk_gk_"_s + chatId;
}

QString metaText(const QString &name, const QStringList &members) {
    QJsonArray ids;
    for (const QString &member : members)
        ids.append(QJsonObject{{u"id"_s, parseUserId(member).value_or(0)}});
    return QString::fromUtf8(json::compact({{u"title"_s, name}, {u"members"_s, ids}, {u"epoch"_s, 1}}));
}

} // namespace

MessengerZkCrypto::MessengerZkCrypto(SecretStore &store, UserDefaults &defaults, ZkServer &server)
    : m_store(store)
    , m_defaults(defaults)
    , m_server(server)
    , m_privKey(loadOrCreateKey(store)) {}

MessengerZkCrypto &MessengerZkCrypto::shared() {
    static auto *crypto = new MessengerZkCrypto(MessengerSession::shared().keychain.store(),
                                                *new UserDefaults, RestKeyServer::shared());
    return *crypto;
}

P256PrivateKey MessengerZkCrypto::loadOrCreateKey(SecretStore &store) {
    SecretStore::Match match = store.copyMatching(service, identityAccount);
    auto stored = match.status == SecretStatus::success ? P256PrivateKey::fromRaw(match.data) : std::nullopt;
    wipe(match.data);
    if (stored)
        return std::move(*stored);
    P256PrivateKey fresh = P256PrivateKey::generate();
    store.remove(service, identityAccount);
    QByteArray raw = fresh.raw().view().toByteArray();
    store.add(service, identityAccount, u"OrvaneTalk group identity key"_s, raw);
    wipe(raw);
    return fresh;
}

QCoro::Task<QJsonObject> MessengerZkCrypto::createZkGroup(QString name, QStringList participantIds,
                                                          QString myUserId) {
    const QJsonObject ownJwk = zk::exportPublicJWK(m_privKey.publicKey());
    co_await m_server.uploadZkIdentity(ownJwk);
    QStringList members{myUserId};
    members += participantIds;
    members.removeDuplicates();
    const SymmetricKey key = std::make_shared<const SecretBytes>(primitives::randomKey());
    const QJsonObject meta = zk::encrypt(metaText(name, members), *key);
    QJsonObject wrappedKeys;
    for (const QString &member : members) {
        const QJsonObject wrapped = co_await wrapSenderKey(key, member);
        wrappedKeys.insert(member, wrapped);
    }
    const QJsonObject answer = co_await m_server.createZkGroup(members, meta, wrappedKeys);
    if (const auto chatId = json::text(answer, u"chat_id")) {
        m_groupKeys.insert(*chatId, key);
        saveGroupKey(*key, *chatId);
        titleCache.insert(*chatId, name);
    }
    co_return answer;
}

QCoro::Task<SymmetricKey> MessengerZkCrypto::loadGroupKey(QString chatId) {
    if (const SymmetricKey cached = m_groupKeys.value(chatId))
        co_return cached;
    if (const SymmetricKey stored = storedGroupKey(chatId)) {
        m_groupKeys.insert(chatId, stored);
        co_return stored;
    }
    const QJsonObject wrapped = co_await m_server.fetchZkSenderKey(chatId);
    const SymmetricKey key = unwrapSenderKey(wrapped);
    m_groupKeys.insert(chatId, key);
    saveGroupKey(*key, chatId);
    co_return key;
}

SymmetricKey MessengerZkCrypto::storedGroupKey(const QString &chatId) {
    SecretStore::Match match = m_store.copyMatching(service, groupAccount(chatId));
    if (match.status == SecretStatus::success) {
        auto key = std::make_shared<const SecretBytes>(QByteArrayView(match.data));
        wipe(match.data);
        return key;
    }
    auto legacy = m_defaults.data(legacyKey(chatId));
    if (!legacy)
        return nullptr;
    auto key = std::make_shared<const SecretBytes>(QByteArrayView(*legacy));
    wipe(*legacy);
    const bool kept =
        dropped([&] { saveGroupKey(*key, chatId); },
                "a key that can't be kept counts as none, and the entry stays for another time");
    return kept ? key : nullptr;
}

void MessengerZkCrypto::saveGroupKey(const SecretBytes &key, const QString &chatId) {
    m_store.remove(service, groupAccount(chatId));
    QByteArray raw = key.view().toByteArray();
    const qint32 status = m_store.add(service, groupAccount(chatId), u"OrvaneTalk group key"_s, raw);
    wipe(raw);
    if (status != SecretStatus::success)
        throw ZkCryptoError(ZkCryptoError::Case::keychain, status);
    m_defaults.remove(legacyKey(chatId));
}

QCoro::Task<std::optional<QString>> MessengerZkCrypto::decryptMessage(QString chatId, QJsonObject raw) {
    const auto payload = json::object(raw, u"zk_payload");
    if (json::boolean(raw, u"zk_encrypted") != true || !payload)
        co_return std::nullopt;
    constexpr auto reason = "what can't be read keeps its stored text";
    const std::optional<SymmetricKey> key = co_await dropped(loadGroupKey(chatId), reason);
    if (!key)
        co_return std::nullopt;
    co_return dropped([&] { return zk::decrypt(*payload, **key); }, reason);
}

QCoro::Task<QJsonObject> MessengerZkCrypto::wrapSenderKey(SymmetricKey senderKey, QString targetUserId) {
    const QJsonObject jwk = co_await m_server.fetchZkIdentity(targetUserId);
    co_return zk::wrap(*senderKey, zk::importPublicJWK(jwk));
}

SymmetricKey MessengerZkCrypto::unwrapSenderKey(const QJsonObject &wrapped) const {
    return std::make_shared<const SecretBytes>(zk::unwrap(wrapped, m_privKey));
}

} // namespace orvane
