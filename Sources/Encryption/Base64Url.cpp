// SPDX-License-Identifier: MIT
#include "Encryption/Base64Url.h"

namespace orvane {

std::optional<QByteArray> fromBase64(const QString &text) {
    // Characters that no byte stands for must not be mistaken for others.
    const QByteArray bytes = text.toUtf8();
    if (bytes.size() % 4 != 0)
        return std::nullopt;
    auto decoded = QByteArray::fromBase64Encoding(bytes, QByteArray::Base64Encoding |
                                                             QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? std::optional(std::move(decoded.decoded)) : std::nullopt;
}

QString toBase64Url(const QByteArray &bytes) {
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

std::optional<QByteArray> fromBase64Url(const QString &text) {
    QString standard = text;
    standard.replace(u'-', u'+').replace(u'_', u'/');
    while (standard.size() % 4 != 0)
        standard.append(u'=');
    return fromBase64(standard);
}

} // namespace orvane
