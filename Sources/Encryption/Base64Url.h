// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvane {

/// Standard base64 with padding (RFC 4648, section 4), without line breaks.
std::optional<QByteArray> fromBase64(const QString &text);

/// The form for URLs without padding (RFC 4648, section 5). Reading also takes the standard letters.
QString toBase64Url(const QByteArray &bytes);
std::optional<QByteArray> fromBase64Url(const QString &text);

} // namespace orvane
