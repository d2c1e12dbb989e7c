// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QHash>

namespace orvane::homeserver {

// A form as clients upload files: text fields, and one part that has a file name.
struct Multipart {
    QHash<QByteArray, QByteArray> fields;
    QByteArray fileName; // as the client wrote it: never a path
    QByteArray fileType;
    QByteArray file;
    bool hasFile = false;
};

// Reads a body of the given content type; refuses with 400 what is no complete form.
Multipart parseMultipart(const QByteArray &contentType, const QByteArray &body);

} // namespace orvane::homeserver
