// SPDX-License-Identifier: MIT
#pragma once

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// The order in which assistive technology meets the rows of a list. A list makes and reuses rows as they
/// come into view, and they would be met in the order in which they were made. Main thread.
class ReadingOrder : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// Puts those items of `content` that have an `index` into its falling order, the last one first. Nothing
    /// happens while no assistive technology listens.
    Q_INVOKABLE static void lastFirst(QQuickItem *content);
};

} // namespace orvane
