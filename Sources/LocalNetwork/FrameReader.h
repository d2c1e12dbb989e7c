// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <optional>

namespace orvane {

/// Cuts a byte stream into frames: a body length in 4 bytes, big-endian, then the body. It holds what has
/// arrived and no whole frame has taken, never what was only announced, and gives memory back with the frame
/// that filled it. The work for a stream is linear in its bytes. Throws std::bad_alloc where memory ends.
class FrameReader {
public:
    void append(QByteArrayView bytes);

    /// The body of the next whole frame, valid until the next call of any function here; absent until more
    /// bytes come. Take all of them before appending again.
    std::optional<QByteArrayView> next();

    void clear();

    /// Bytes of memory in use.
    qsizetype capacity() const { return m_bytes.capacity(); }

private:
    QByteArray m_bytes;
    qsizetype m_start = 0;
};

} // namespace orvane
