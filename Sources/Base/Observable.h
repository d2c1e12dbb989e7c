#pragma once

#include <QObject>
#include <QProperty>
#include <QVariant>

#include <optional>

/// `OBSERVABLE(QString, inputText);` in a QObject class declares the member `inputText`, a QProperty with the
/// optional initial value that follows the name, and the property of the same name that QML binds to.
/// Code reads and assigns the member like a plain field. Main thread.
#define OBSERVABLE(TYPE, NAME, ...)                                                                          \
    Q_PROPERTY(TYPE NAME READ read_##NAME WRITE write_##NAME BINDABLE bindable_##NAME)                       \
public:                                                                                                      \
    QProperty<TYPE> NAME{__VA_ARGS__};                                                                       \
    TYPE read_##NAME() const {                                                                               \
        return NAME.value();                                                                                 \
    }                                                                                                        \
    void write_##NAME(const TYPE &value) {                                                                   \
        NAME.setValue(value);                                                                                \
    }                                                                                                        \
    QBindable<TYPE> bindable_##NAME() {                                                                      \
        return &NAME;                                                                                        \
    }

/// The same for a value that may be absent, which QML reads as undefined and can't write.
#define OBSERVABLE_OPTIONAL(TYPE, NAME)                                                                      \
    Q_PROPERTY(QVariant NAME READ read_##NAME BINDABLE bindable_##NAME)                                      \
public:                                                                                                      \
    QProperty<std::optional<TYPE>> NAME;                                                                     \
    QVariant read_##NAME() const {                                                                           \
        const std::optional<TYPE> present = NAME.value();                                                    \
        return present ? QVariant::fromValue(*present) : QVariant();                                         \
    }                                                                                                        \
    QBindable<std::optional<TYPE>> bindable_##NAME() {                                                       \
        return &NAME;                                                                                        \
    }
