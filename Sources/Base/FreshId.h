// SPDX-License-Identifier: MIT
#pragma once

#include <QRandomGenerator>
#include <QString>
#include <QUuid>

namespace orvane {

/// A random UUID (RFC 9562, version 4) as upper-case text without braces. Unique, but no secret: it comes
/// from the process's generator, which asks the system once instead of for every id. Any thread.
inline QString freshId() {
    const quint64 high = QRandomGenerator::global()->generate64();
    const quint64 low = QRandomGenerator::global()->generate64();
    const auto byte = [low](int index) { return uchar(low >> (8 * index)); };
    const QUuid id(uint(high >> 32), ushort(high >> 16), ushort((high & 0x0FFF) | 0x4000),
                   uchar((byte(7) & 0x3F) | 0x80), byte(6), byte(5), byte(4), byte(3), byte(2), byte(1),
                   byte(0));
    return QString::fromLatin1(id.toByteArray(QUuid::WithoutBraces).toUpper());
}

} // namespace orvane
