// SPDX-License-Identifier: MIT
#include "Server/MultipartBody.h"

namespace orvane {

namespace {

QByteArray quotable(const QString &name) {
    return name.toUtf8().replace('"', "%22").replace('\r', "%0D").replace('\n', "%0A");
}

} // namespace

QByteArray MultipartBody::contentType() const {
    return "multipart/form-data; boundary=" + boundary.toUtf8();
}

QByteArray MultipartBody::bytes() const {
    const QByteArray delimiter = "--" + boundary.toUtf8();
    QByteArray body;
    body.reserve(fileBytes.size() + 512);
    if (chatId)
        body += delimiter + "\r\nContent-Disposition: form-data; name=\"chat_id\"\r\n\r\n" +
                chatId->toUtf8() + "\r\n";
    body += delimiter + "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"" +
            quotable(fileName) + "\"\r\nContent-Type: " + fileType + "\r\n\r\n";
    body += fileBytes;
    body += "\r\n" + delimiter + "--\r\n";
    return body;
}

} // namespace orvane
