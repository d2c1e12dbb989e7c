// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

#include <optional>

class QIODevice;

namespace orvane {

/// The content lines of vCards (versions 2.1, 3.0 and 4.0) with all their ways of being folded undone. Lines
/// end with LF or CR LF. A line longer than 360,000 bytes is cut there, and no more than that is ever held.
class VCardLines {
public:
    /// The device outlives this object.
    explicit VCardLines(QIODevice &from)
        : m_from(from) {}

    /// Without its line break; absent at the end.
    std::optional<QByteArray> next();

private:
    std::optional<QByteArray> physical();

    QIODevice &m_from;
    std::optional<QByteArray> m_ahead;
};

} // namespace orvane
