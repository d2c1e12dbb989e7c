// SPDX-License-Identifier: MIT
#include "HomeServer/Http/Multipart.h"

#include "HomeServer/Http/Message.h"

#include <QList>

namespace orvane::homeserver {

namespace {

constexpr qsizetype mostParts = 20;

// Reads a quoted text from its opening mark on; `at` is moved behind the closing one. A backslash escapes a
// quotation mark or itself; before anything else it is one, as old clients write paths.
QByteArray quoted(const QByteArray &header, qsizetype &at) {
    QByteArray value("");
    for (++at; at < header.size() && header[at] != '"'; ++at) {
        if (header[at] == '\\' && at + 1 < header.size() && (header[at + 1] == '"' || header[at + 1] == '\\'))
            ++at;
        value += header[at];
    }
    ++at;
    return value;
}

// The value of `name` in a header like `form-data; name="a"; filename="b;c"`; absent gives a null array.
QByteArray parameter(const QByteArray &header, const QByteArray &name) {
    for (qsizetype at = header.indexOf(';'); at >= 0; at = header.indexOf(';', at)) {
        const qsizetype equals = header.indexOf('=', ++at);
        if (equals < 0)
            break;
        const QByteArray key = header.mid(at, equals - at).trimmed().toLower();
        at = equals + 1;
        QByteArray value("");
        if (at < header.size() && header[at] == '"') {
            value = quoted(header, at);
        } else {
            const qsizetype end = header.indexOf(';', at);
            value = header.mid(at, end < 0 ? -1 : end - at).trimmed();
        }
        if (key == name)
            return value.isNull() ? QByteArray("") : value;
    }
    return {};
}

void readPart(const QByteArray &part, Multipart &form) {
    const qsizetype blank = part.indexOf("\r\n\r\n");
    if (blank < 0)
        refuseBadRequest();
    QByteArray disposition;
    QByteArray type;
    for (const QByteArray &line : part.left(blank).split('\n')) {
        const qsizetype colon = line.indexOf(':');
        const QByteArray name = line.left(colon).trimmed().toLower();
        if (name == "content-disposition")
            disposition = line.mid(colon + 1).trimmed();
        else if (name == "content-type")
            type = line.mid(colon + 1).trimmed();
    }
    const QByteArray name = parameter(disposition, "name");
    const QByteArray fileName = parameter(disposition, "filename");
    if (name.isNull())
        refuseBadRequest();
    if (fileName.isNull()) {
        form.fields.insert(name, part.mid(blank + 4));
        return;
    }
    form.hasFile = true;
    form.fileName = fileName;
    form.fileType = type;
    form.file = part.mid(blank + 4);
}

} // namespace

Multipart parseMultipart(const QByteArray &contentType, const QByteArray &body) {
    const QByteArray boundary = parameter(contentType, "boundary");
    if (!contentType.toLower().startsWith("multipart/form-data") || boundary.isEmpty() ||
        boundary.size() > 200)
        refuseBadRequest();
    const QByteArray opening = "--" + boundary;
    const QByteArray between = "\r\n" + opening;
    if (!body.startsWith(opening))
        refuseBadRequest();
    Multipart form;
    qsizetype from = opening.size();
    for (qsizetype parts = 0; body.mid(from, 2) == "\r\n"; ++parts) {
        const qsizetype end = body.indexOf(between, from);
        if (end < 0 || parts == mostParts)
            refuseBadRequest();
        readPart(body.mid(from + 2, end - from - 2), form);
        from = end + between.size();
    }
    if (body.mid(from, 2) != "--")
        refuseBadRequest();
    return form;
}

} // namespace orvane::homeserver
