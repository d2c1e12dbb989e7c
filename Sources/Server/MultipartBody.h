// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvane {

/// The body of an upload (RFC 7578): at most one field, then one file. Pure.
struct MultipartBody {
    QString boundary;
    std::optional<QString> chatId;
    /// Quotes and line ends in it are percent-encoded, so that no name can end its header.
    QString fileName;
    QByteArray fileType;
    QByteArray fileBytes;

    QByteArray contentType() const;
    QByteArray bytes() const;
};

} // namespace orvane
