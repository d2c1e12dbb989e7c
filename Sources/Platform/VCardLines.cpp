// SPDX-License-Identifier: MIT
#include "Platform/VCardLines.h"

#include <QIODevice>

#include <utility>

namespace orvane {

namespace {

constexpr qsizetype longestLine = 360'000;
constexpr qint64 chunk = 65'536;

void append(QByteArray &line, QByteArrayView piece) {
    line.append(piece.first(std::min(piece.size(), longestLine - line.size())));
}

} // namespace

std::optional<QByteArray> VCardLines::physical() {
    if (m_ahead)
        return std::exchange(m_ahead, std::nullopt);
    QByteArray line;
    QByteArray piece = m_from.readLine(chunk);
    if (piece.isEmpty())
        return std::nullopt;
    for (; !piece.isEmpty(); piece = m_from.readLine(chunk)) {
        append(line, piece);
        if (piece.endsWith('\n'))
            break;
    }
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return line;
}

std::optional<QByteArray> VCardLines::next() {
    std::optional<QByteArray> line = physical();
    if (!line)
        return line;
    const QByteArray head = line->left(line->indexOf(':')).toUpper();
    const bool quotedPrintable = head.contains("QUOTED-PRINTABLE");
    // Old writers don't indent the rest of a picture. No base64 has a colon, and every content line has one.
    const bool base64 = head.contains("BASE64") || head.contains("ENCODING=B");
    while (const std::optional<QByteArray> more = physical()) {
        if (quotedPrintable && line->endsWith('=')) {
            line->chop(1);
            append(*line, *more);
        } else if (more->startsWith(' ') || more->startsWith('\t')) {
            append(*line, QByteArrayView(*more).sliced(1));
        } else if (base64 && !more->isEmpty() && !more->contains(':')) {
            append(*line, *more);
        } else {
            m_ahead = more;
            break;
        }
    }
    return line;
}

} // namespace orvane
