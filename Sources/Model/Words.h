// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// How texts from others are made fit for a place on the screen. Pure.
namespace orvane {

/// Its beginning in one line: more than fits into the widest row, and little enough to lay out at once.
inline QString asOneLine(const QString &text) {
    constexpr qsizetype longest = 200;
    return text.left(longest).simplified();
}

/// Without the spaces and tabs at both ends; line breaks stay.
QString withoutBlanks(QString text);

} // namespace orvane
