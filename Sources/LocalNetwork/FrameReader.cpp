// SPDX-License-Identifier: MIT
#include "LocalNetwork/FrameReader.h"

#include <QtEndian>

#include <utility>

namespace orvane {

namespace {

constexpr qsizetype prefix = sizeof(quint32);

} // namespace

void FrameReader::append(QByteArrayView bytes) {
    // Appending alone would allocate and copy each time it grows; this moves pages.
    const qsizetype needed = m_bytes.size() + bytes.size();
    if (needed > m_bytes.capacity())
        m_bytes.reserve(qMax(needed, 2 * m_bytes.capacity()));
    m_bytes.append(bytes);
}

std::optional<QByteArrayView> FrameReader::next() {
    const QByteArrayView rest = QByteArrayView(m_bytes).sliced(m_start);
    if (rest.size() >= prefix) {
        const qsizetype length = qFromBigEndian<quint32>(rest.data());
        if (rest.size() - prefix >= length) {
            m_start += prefix + length;
            return rest.sliced(prefix, length);
        }
    }
    // The rest came with the last bytes, so that no byte is copied here twice.
    if (m_start > 0)
        m_bytes = m_bytes.mid(std::exchange(m_start, 0));
    return std::nullopt;
}

void FrameReader::clear() {
    m_bytes.clear();
    m_start = 0;
}

} // namespace orvane
