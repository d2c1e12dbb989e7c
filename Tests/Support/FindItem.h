// SPDX-License-Identifier: MIT
#pragma once

#include <QQuickItem>
#include <QVariant>

namespace orvane {

/// The first visible item, in depth, that has this value; null when there is none.
inline QQuickItem *findItem(QQuickItem *item, const char *property, const QVariant &value) {
    if (item->isVisible() && item->property(property) == value)
        return item;
    for (QQuickItem *child : item->childItems()) {
        if (QQuickItem *found = findItem(child, property, value))
            return found;
    }
    return nullptr;
}

} // namespace orvane
