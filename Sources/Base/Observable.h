// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QProperty>
#include <QVariant>

#include <optional>

/// `OBSERVABLE(QString, inputText);` in a QObject class declares the member `inputText`, a QProperty with the
/// optional initial value that follows the name, and the property of the same name that QML binds to, with
/// its signal `inputTextChanged`. Code reads and assigns the member like a plain field. Main thread.
///
/// QML hears of changes by the signal alone: an observer of the member itself would remember its address, and
/// take another object that comes to lie there for the one it watches already.
#define OBSERVABLE(TYPE, NAME, ...)                                                                          \
    Q_PROPERTY(TYPE NAME READ read_##NAME WRITE write_##NAME NOTIFY NAME##Changed)                           \
    OBSERVABLE_MEMBER(TYPE, NAME, __VA_ARGS__)                                                               \
    TYPE read_##NAME() const {                                                                               \
        return NAME.value();                                                                                 \
    }                                                                                                        \
    void write_##NAME(const TYPE &value) {                                                                   \
        NAME.setValue(value);                                                                                \
    }

/// The same for a value that may be absent, which QML reads as undefined and can't write.
#define OBSERVABLE_OPTIONAL(TYPE, NAME)                                                                      \
    Q_PROPERTY(QVariant NAME READ read_##NAME NOTIFY NAME##Changed)                                          \
    OBSERVABLE_MEMBER(std::optional<TYPE>, NAME)                                                             \
    QVariant read_##NAME() const {                                                                           \
        const std::optional<TYPE> present = NAME.value();                                                    \
        return present ? QVariant::fromValue(*present) : QVariant();                                         \
    }

/// What both share: the signal, the member, and the link between them.
#define OBSERVABLE_MEMBER(TYPE, NAME, ...)                                                                   \
Q_SIGNALS:                                                                                                   \
    void NAME##Changed();                                                                                    \
                                                                                                             \
public:                                                                                                      \
    QProperty<TYPE> NAME{__VA_ARGS__};                                                                       \
    QPropertyNotifier tell_##NAME = NAME.addNotifier([this] { Q_EMIT NAME##Changed(); });
