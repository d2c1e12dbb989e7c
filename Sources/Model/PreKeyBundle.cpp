// SPDX-License-Identifier: MIT
#include "Model/PreKeyBundle.h"

#include "Base/Json.h"

namespace orvane {

namespace {

std::optional<QByteArray> base64(const QJsonObject &object, QStringView key) {
    const auto text = json::text(object, key);
    // Conversion to Latin-1 would turn foreign characters into "?", which is no base64 either.
    if (!text || text->size() % 4 != 0)
        return std::nullopt;
    const auto decoded =
        QByteArray::fromBase64Encoding(text->toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? std::optional(*decoded) : std::nullopt;
}

} // namespace

std::optional<PreKeyBundle> PreKeyBundle::from(const QJsonObject &json) {
    const auto identityKey = base64(json, u"identity_key");
    const auto signedPreKey = base64(json, u"signed_pre_key");
    const auto signature = base64(json, u"signed_pre_key_signature");
    if (!identityKey || !signedPreKey || !signature)
        return std::nullopt;
    return PreKeyBundle{*identityKey, *signedPreKey, *signature, base64(json, u"one_time_pre_key")};
}

} // namespace orvane
