// SPDX-License-Identifier: MIT
#include "Conversation/Chat/MessageCipher.h"

#include "Base/Task.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

const auto placeholder = u"🔒 Encrypted"_s;

constexpr auto nextWay = "the next way is tried";
constexpr auto staysSealed = "what can't be opened is shown as it came";

} // namespace

MessageCipher::MessageCipher(const MessengerChat &chat, MessengerAPI &api, const EndToEnd *engines)
    : m_chat(chat)
    , m_api(api)
    , m_engines(engines) {}

QCoro::Task<bool> MessageCipher::establishSession(QString peer) {
    if (!isOn() || peer.isEmpty() || m_engines->crypto().hasSession(m_chat.id))
        co_return false;
    constexpr auto reason = "the chat goes on unencrypted";
    const std::optional<PreKeyBundle> bundle = co_await dropped(m_api.fetchPreKeyBundle(peer), reason);
    if (!bundle)
        co_return false;
    const auto establish = [&] {
        m_engines->crypto().establishSession(m_chat.id, bundle->identityKey,
                                             bundle->oneTimePreKey.value_or(bundle->signedPreKey), true);
    };
    co_return dropped(establish, reason);
}

QCoro::Task<OutboundContent> MessageCipher::prepareOutboundContent(QString text) {
    OutboundContent content{text, text, std::nullopt};
    if (!isOn())
        co_return content;
    if (m_chat.zkMode) {
        const std::optional<SymmetricKey> key =
            co_await dropped(m_engines->zkCrypto().loadGroupKey(m_chat.id), nextWay);
        if (key)
            content.zkPayload = dropped([&] { return zk::encrypt(text, **key); }, nextWay);
        if (content.zkPayload) {
            content.serverContent = placeholder;
            co_return content;
        }
    }
    content.serverContent = sealed(text);
    co_return content;
}

QString MessageCipher::sealed(const QString &text) {
    MessengerCrypto &crypto = m_engines->crypto();
    if (m_chat.type == ChatType::group && crypto.hasGroupKey(m_chat.id)) {
        const auto content =
            dropped([&] { return crypto.encryptGroup(m_chat.id, text).toContent(); }, nextWay);
        if (content)
            return *content;
    }
    return sealedPairwise(m_chat.id, text);
}

QString MessageCipher::plainText(const QString &content) {
    if (!isOn() || !m_engines->crypto().hasSession(m_chat.id))
        return content;
    const auto known = m_read.constFind(content);
    if (known != m_read.constEnd())
        return *known;
    return *m_read.insert(content, openedPairwise(content).value_or(content));
}

QString MessageCipher::sealedPairwise(const QString &chatID, const QString &text) {
    if (!isOn())
        return text;
    const auto content = dropped([&] { return m_engines->crypto().encrypt(chatID, text).toContent(); },
                                 "without a session the text goes out in the clear");
    return content.value_or(text);
}

QCoro::Task<QString> MessageCipher::historyContent(QJsonObject raw, QString content) {
    if (!isOn())
        co_return content;
    if (m_chat.zkMode) {
        const auto text = co_await m_engines->zkCrypto().decryptMessage(m_chat.id, raw);
        if (text)
            co_return *text;
    }
    if (const auto text = openedForGroup(content))
        co_return *text;
    co_return openedPairwise(content).value_or(content);
}

QCoro::Task<QString> MessageCipher::liveContent(QJsonObject raw, QString content) {
    if (!isOn())
        co_return content;
    if (m_chat.zkMode) {
        const auto text = co_await m_engines->zkCrypto().decryptMessage(m_chat.id, raw);
        if (text)
            co_return *text;
    }
    co_return openedPairwise(content).value_or(content);
}

std::optional<QString> MessageCipher::openedForGroup(const QString &content) {
    MessengerCrypto &crypto = m_engines->crypto();
    if (m_chat.type != ChatType::group || !crypto.hasGroupKey(m_chat.id))
        return std::nullopt;
    const auto encrypted = EncryptedMessage::fromContent(content);
    if (!encrypted)
        return std::nullopt;
    return dropped([&] { return crypto.decryptGroup(m_chat.id, *encrypted); }, staysSealed);
}

std::optional<QString> MessageCipher::openedPairwise(const QString &content) {
    if (!isOn())
        return std::nullopt;
    MessengerCrypto &crypto = m_engines->crypto();
    if (!crypto.hasSession(m_chat.id))
        return std::nullopt;
    const auto encrypted = EncryptedMessage::fromContent(content);
    if (!encrypted)
        return std::nullopt;
    return dropped([&] { return crypto.decrypt(m_chat.id, *encrypted); }, staysSealed);
}

} // namespace orvane
