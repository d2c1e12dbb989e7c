// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// How much of what was copied elsewhere fits into a message that is being written. The toolkit's own pasting
/// lays out whatever comes, and a megabyte of it takes many seconds. Main thread.
class WritingLimit : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// Characters, in UTF-16 code units, that a message holds.
    Q_PROPERTY(int most MEMBER most CONSTANT)

public:
    static constexpr int most = 65'536;

    using QObject::QObject;

    /// The beginning of `text` that has room in so many characters; no character is cut in two.
    Q_INVOKABLE static QString fitting(const QString &text, int room);
    Q_INVOKABLE static QString copied();
    /// What was selected last with the pointer, where the desktop keeps that apart.
    Q_INVOKABLE static QString selected();
};

} // namespace orvane
