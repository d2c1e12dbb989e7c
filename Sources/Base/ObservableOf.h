// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"

/// `OBSERVABLE_OF(m_draft, QString, text)` after the member `m_draft`, an object with `OBSERVABLE(QString,
/// text)`, gives that field to its owner too, under the same name for code and QML: it is read, assigned and
/// watched there like one of its own.
#define OBSERVABLE_OF(PART, TYPE, NAME)                                                                      \
    Q_PROPERTY(TYPE NAME READ read_##NAME WRITE write_##NAME NOTIFY NAME##Changed)                           \
    OBSERVABLE_MEMBER_OF(PART, TYPE, NAME)                                                                   \
    TYPE read_##NAME() const {                                                                               \
        return PART.read_##NAME();                                                                           \
    }                                                                                                        \
    void write_##NAME(const TYPE &value) {                                                                   \
        PART.write_##NAME(value);                                                                            \
    }

/// The same for an OBSERVABLE_OPTIONAL.
#define OBSERVABLE_OPTIONAL_OF(PART, TYPE, NAME)                                                             \
    Q_PROPERTY(QVariant NAME READ read_##NAME NOTIFY NAME##Changed)                                          \
    OBSERVABLE_MEMBER_OF(PART, std::optional<TYPE>, NAME)                                                    \
    QVariant read_##NAME() const {                                                                           \
        return PART.read_##NAME();                                                                           \
    }

#define OBSERVABLE_MEMBER_OF(PART, TYPE, NAME)                                                               \
Q_SIGNALS:                                                                                                   \
    void NAME##Changed();                                                                                    \
                                                                                                             \
public:                                                                                                      \
    QProperty<TYPE> &NAME = PART.NAME;                                                                       \
    QPropertyNotifier tell_##NAME = NAME.addNotifier([this] { Q_EMIT NAME##Changed(); });
