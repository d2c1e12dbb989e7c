// SPDX-License-Identifier: MIT
#include "Conversation/Sending/WritingLimit.h"

#include <QClipboard>
#include <QGuiApplication>

#include <algorithm>

namespace orvane {

QString WritingLimit::fitting(const QString &text, int room) {
    if (text.size() <= room)
        return text;
    const qsizetype end = std::max(0, room);
    return text.first(end > 0 && text.at(end - 1).isHighSurrogate() ? end - 1 : end);
}

QString WritingLimit::copied() {
    return QGuiApplication::clipboard()->text(QClipboard::Clipboard);
}

QString WritingLimit::selected() {
    return QGuiApplication::clipboard()->text(QClipboard::Selection);
}

} // namespace orvane
