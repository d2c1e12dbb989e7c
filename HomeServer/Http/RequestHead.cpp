// SPDX-License-Identifier: MIT
#include "HomeServer/Http/RequestHead.h"

#include <QHash>

#include <algorithm>

namespace orvane::homeserver {

namespace {

constexpr qsizetype mostFields = 100;

using Fields = QHash<QByteArray, QByteArray>;

bool isToken(const QByteArray &text) {
    return !text.isEmpty() && std::ranges::all_of(text, [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               QByteArrayView("!#$%&'*+-.^_`|~").contains(c);
    });
}

bool isControl(char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7f;
}

Fields readFields(const QList<QByteArray> &lines) {
    if (lines.size() > mostFields)
        throw Refusal(431, "headers_too_large");
    Fields fields;
    for (const QByteArray &line : lines) {
        const qsizetype colon = line.indexOf(':');
        const QByteArray name = line.left(colon).toLower();
        const QByteArray value = line.mid(colon + 1).trimmed();
        if (colon < 0 || !isToken(name) || std::ranges::any_of(value, isControl))
            refuseBadRequest();
        // Two lengths are how requests are smuggled past a proxy.
        if (name == "content-length" && fields.contains(name))
            refuseBadRequest();
        fields.insert(name, fields.contains(name) ? fields[name] + ", " + value : value);
    }
    return fields;
}

qint64 lengthIn(const Fields &fields) {
    if (fields.contains("transfer-encoding"))
        throw Refusal(411, "length_required");
    const QByteArray text = fields.value("content-length", "0");
    bool decimal = false;
    const qint64 length = text.toLongLong(&decimal);
    if (!decimal || length < 0 || !std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; }))
        refuseBadRequest();
    return length;
}

void readTarget(const QByteArray &target, Request &request) {
    if (!target.startsWith('/') || std::ranges::any_of(target, isControl))
        refuseBadRequest();
    const qsizetype mark = target.indexOf('?');
    const QByteArray path = mark < 0 ? target : target.left(mark);
    for (const QByteArray &segment : path.mid(1).split('/'))
        request.segments.append(QString::fromUtf8(QByteArray::fromPercentEncoding(segment)));
    if (mark >= 0)
        request.query = QUrlQuery(QString::fromUtf8(target.mid(mark + 1)));
}

QByteArray bearerToken(const QByteArray &authorization) {
    static const QByteArray scheme = "bearer ";
    return authorization.left(scheme.size()).toLower() == scheme ? authorization.mid(scheme.size()).trimmed()
                                                                 : QByteArray();
}

} // namespace

RequestHead parseHead(const QByteArray &bytes) {
    QList<QByteArray> lines;
    for (qsizetype from = 0; from <= bytes.size();) {
        const qsizetype end = bytes.indexOf("\r\n", from);
        lines.append(bytes.mid(from, end < 0 ? -1 : end - from));
        from = end < 0 ? bytes.size() + 1 : end + 2;
    }
    const QList<QByteArray> line = lines.takeFirst().split(' ');
    if (line.size() != 3 || !isToken(line[0]))
        refuseBadRequest();
    if (line[2] != "HTTP/1.1" && line[2] != "HTTP/1.0")
        throw Refusal(501, "not_implemented");
    const Fields fields = readFields(lines);

    RequestHead head;
    head.request.method = line[0].toUpper();
    readTarget(line[1], head.request);
    head.request.token = bearerToken(fields["authorization"]);
    head.request.idempotencyKey = fields["idempotency-key"];
    head.request.contentType = fields["content-type"];
    head.forwardedFor = fields["x-forwarded-for"].split(',').last().trimmed();
    head.bodyLength = lengthIn(fields);
    const QByteArray connection = fields["connection"].toLower();
    head.keepAlive =
        line[2] == "HTTP/1.1" ? !connection.contains("close") : connection.contains("keep-alive");
    head.expectContinue = fields["expect"].toLower() == "100-continue";
    return head;
}

} // namespace orvane::homeserver
