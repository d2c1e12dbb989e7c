// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <QVariant>

#include <optional>
#include <type_traits>

/// A value record declares its fields once, as a list macro of three kinds of entries:
///
///     #define FORWARD_INFO(FIELD, OPTIONAL, ENUM)
///         FIELD(QString, originalChatID)
///         OPTIONAL(QString, note)
///         ENUM(AttachmentType, type)
///
///     class ForwardInfo { Q_GADGET QML_VALUE_TYPE(forwardInfo) RECORD(ForwardInfo, FORWARD_INFO) };
///
/// From that one list come the members, in the declared order, the properties that QML reads, field-wise
/// equality and hashing, and the stored form of DerivedJson.h. QML sees an absent optional as undefined and
/// an enumerator as its raw text.
#define RECORD(TYPE, FIELDS)                                                                                 \
    FIELDS(RECORD_FIELD, RECORD_OPTIONAL, RECORD_ENUM)                                                       \
public:                                                                                                      \
    bool operator==(const TYPE &) const = default;                                                           \
    template <typename Self, typename Visitor>                                                               \
    static void visitFields(Self &self, Visitor &&visit) {                                                   \
        FIELDS(RECORD_VISIT, RECORD_VISIT, RECORD_VISIT)                                                     \
    }

#define RECORD_FIELD(TYPE, NAME)                                                                             \
    Q_PROPERTY(TYPE NAME MEMBER NAME)                                                                        \
public:                                                                                                      \
    TYPE NAME{};

#define RECORD_OPTIONAL(TYPE, NAME)                                                                          \
    Q_PROPERTY(QVariant NAME READ read_##NAME)                                                               \
public:                                                                                                      \
    std::optional<TYPE> NAME;                                                                                \
    QVariant read_##NAME() const {                                                                           \
        return NAME ? QVariant::fromValue(*NAME) : QVariant();                                               \
    }

#define RECORD_ENUM(TYPE, NAME)                                                                              \
    Q_PROPERTY(QString NAME READ read_##NAME)                                                                \
public:                                                                                                      \
    TYPE NAME{};                                                                                             \
    QString read_##NAME() const {                                                                            \
        return orvane::rawText(NAME);                                                                        \
    }

#define RECORD_VISIT(TYPE, NAME) visit(#NAME, self.NAME);

namespace orvane {

namespace detail {
struct AnyVisitor {
    template <typename T>
    void operator()(const char *, T &) const {}
};
} // namespace detail

template <typename T>
concept Record = requires(const T &record) {
    T::visitFields(record, detail::AnyVisitor{});
};

template <typename T>
size_t hashOfField(const T &value, size_t seed) {
    if constexpr (std::is_enum_v<T>)
        return qHash(int(value), seed);
    else
        return qHash(value, seed);
}

template <typename T>
size_t hashOfField(const std::optional<T> &value, size_t seed) {
    return value ? hashOfField(*value, seed) : ~seed;
}

// Not Qt's hash of lists: that one asks for a hash without a seed.
template <typename T>
size_t hashOfField(const QList<T> &values, size_t seed) {
    for (const T &value : values)
        seed = 31 * seed + hashOfField(value, seed);
    return seed;
}

/// No default for the seed: Qt derives a hash of its own from a one-argument one, and the two would be
/// ambiguous.
template <Record R>
size_t qHash(const R &record, size_t seed) {
    R::visitFields(record,
                   [&](const char *, const auto &value) { seed = 31 * seed + hashOfField(value, seed); });
    return seed;
}

} // namespace orvane
