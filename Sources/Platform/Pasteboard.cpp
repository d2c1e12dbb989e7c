// SPDX-License-Identifier: MIT
#include "Platform/Pasteboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace orvane {

void setPasteboardText(const QString &text) {
    QGuiApplication::clipboard()->setText(text);
}

} // namespace orvane
