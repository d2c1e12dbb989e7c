// SPDX-License-Identifier: MIT
#include "Model/Words.h"

namespace orvane {

QString withoutBlanks(QString text) {
    const auto isBlank = [](QChar c) { return c.category() == QChar::Separator_Space || c == u'\t'; };
    while (!text.isEmpty() && isBlank(text.front()))
        text.remove(0, 1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

} // namespace orvane
