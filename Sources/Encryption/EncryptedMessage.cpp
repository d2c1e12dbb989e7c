// SPDX-License-Identifier: MIT
#include "Encryption/EncryptedMessage.h"

#include "Base/Json.h"
#include "Encryption/Base64Url.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString base64(const QByteArray &bytes) {
    return QString::fromLatin1(bytes.toBase64());
}

std::optional<QByteArray> bytesUnder(const QJsonObject &object, QStringView key) {
    const auto text = json::text(object, key);
    return text ? fromBase64(*text) : std::nullopt;
}

bool isAbsent(const QJsonObject &object, QLatin1StringView key) {
    return object.value(key).isUndefined() || object.value(key).isNull();
}

} // namespace

QString EncryptedMessage::toContent() const {
    QJsonObject object{
        {u"ciphertext"_s, base64(ciphertext)}, {u"nonce"_s, base64(nonce)}, {u"tag"_s, base64(tag)}};
    if (messageNumber)
        object.insert(u"messageNumber"_s, *messageNumber);
    if (ephemeralKey)
        object.insert(u"ephemeralKey"_s, base64(*ephemeralKey));
    return base64(json::compact(object));
}

std::optional<EncryptedMessage> EncryptedMessage::fromContent(const QString &content) {
    const auto bytes = fromBase64(content);
    if (!bytes)
        return std::nullopt;
    const auto object = json::readObject(*bytes);
    if (!object)
        return std::nullopt;
    auto ciphertext = bytesUnder(*object, u"ciphertext");
    auto nonce = bytesUnder(*object, u"nonce");
    auto tag = bytesUnder(*object, u"tag");
    if (!ciphertext || !nonce || !tag)
        return std::nullopt;
    EncryptedMessage message{std::move(*ciphertext), std::move(*nonce), std::move(*tag),
                             json::integer(*object, u"messageNumber"), bytesUnder(*object, u"ephemeralKey")};
    if (!message.messageNumber && !isAbsent(*object, "messageNumber"_L1))
        return std::nullopt;
    if (!message.ephemeralKey && !isAbsent(*object, "ephemeralKey"_L1))
        return std::nullopt;
    return message;
}

} // namespace orvane
