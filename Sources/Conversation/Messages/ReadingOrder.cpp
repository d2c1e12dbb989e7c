// SPDX-License-Identifier: MIT
#include "Conversation/Messages/ReadingOrder.h"

#include <QAccessible>

#include <algorithm>

namespace orvane {

void ReadingOrder::lastFirst(QQuickItem *content) {
    // Asked for later, the list may be gone by now.
    if (!content || !QAccessible::isActive())
        return;
    const auto place = [](const QQuickItem *item) { return item->property("index").toInt(); };
    QList<QQuickItem *> rows = content->childItems();
    rows.removeIf([](const QQuickItem *item) { return !item->property("index").isValid(); });
    std::stable_sort(rows.begin(), rows.end(),
                     [&](const QQuickItem *a, const QQuickItem *b) { return place(a) > place(b); });
    for (qsizetype row = 1; row < rows.size(); ++row)
        rows.at(row)->stackAfter(rows.at(row - 1));
}

} // namespace orvane
