// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Json.h"
#include "Base/Times.h"
#include "Model/Enumerations.h"
#include "Model/Record.h"

#include <QSet>
#include <QUrl>

/// The form in which records are stored and nested: one JSON object a record, keys as the field names,
/// enumerators as raw text, URLs as text, dates as seconds since 2001. The parse is strict: a required key
/// that is missing, an unknown raw text or a wrong type fails the whole record; null counts as absent;
/// unknown keys are ignored.
namespace orvane::derived {

template <Record R>
QJsonObject toJson(const R &record);
template <Record R>
std::optional<R> fromJson(const QJsonObject &object);

template <typename T>
struct Codec;

template <>
struct Codec<QString> {
    static QJsonValue write(const QString &value) { return value; }
    static std::optional<QString> read(const QJsonValue &value) { return json::asText(value); }
};

template <>
struct Codec<bool> {
    static QJsonValue write(bool value) { return value; }
    static std::optional<bool> read(const QJsonValue &value) { return json::asBoolean(value); }
};

template <>
struct Codec<qint64> {
    static QJsonValue write(qint64 value) { return value; }
    static std::optional<qint64> read(const QJsonValue &value) { return json::asInteger(value); }
};

template <>
struct Codec<double> {
    static QJsonValue write(double value) { return value; }
    static std::optional<double> read(const QJsonValue &value) { return json::asNumber(value); }
};

template <>
struct Codec<QDateTime> {
    static QJsonValue write(const QDateTime &value) { return times::toReferenceSeconds(value); }
    static std::optional<QDateTime> read(const QJsonValue &value) {
        const auto seconds = json::asNumber(value);
        return seconds ? std::optional(times::fromReferenceSeconds(*seconds)) : std::nullopt;
    }
};

template <>
struct Codec<QUrl> {
    static QJsonValue write(const QUrl &value) { return value.toString(QUrl::FullyEncoded); }
    static std::optional<QUrl> read(const QJsonValue &value) {
        const auto text = json::asText(value);
        const QUrl given = text ? QUrl(*text, QUrl::StrictMode) : QUrl();
        // Some texts are encoded differently when they are written; the record holds what will be written.
        const QUrl url(given.toString(QUrl::FullyEncoded), QUrl::StrictMode);
        return url.isValid() ? std::optional(url) : std::nullopt;
    }
};

template <typename E>
requires std::is_enum_v<E>
struct Codec<E> {
    static QJsonValue write(E value) { return rawText(value); }
    static std::optional<E> read(const QJsonValue &value) {
        const auto text = json::asText(value);
        return text ? fromRawText<E>(*text) : std::nullopt;
    }
};

template <Record R>
struct Codec<R> {
    static QJsonValue write(const R &value) { return toJson(value); }
    static std::optional<R> read(const QJsonValue &value) {
        return value.isObject() ? fromJson<R>(value.toObject()) : std::nullopt;
    }
};

template <typename Container, typename T>
struct ContainerCodec {
    static QJsonValue write(const Container &values) {
        QJsonArray array;
        for (const T &value : values)
            array.append(Codec<T>::write(value));
        return array;
    }
    static std::optional<Container> read(const QJsonValue &value) {
        if (!value.isArray())
            return std::nullopt;
        Container result;
        const QJsonArray array = value.toArray();
        result.reserve(array.size());
        for (const auto &element : array) {
            auto parsed = Codec<T>::read(element);
            if (!parsed)
                return std::nullopt;
            result << std::move(*parsed);
        }
        return result;
    }
};

template <typename T>
struct Codec<QList<T>> : ContainerCodec<QList<T>, T> {};
template <typename T>
struct Codec<QSet<T>> : ContainerCodec<QSet<T>, T> {};

namespace detail {

struct Writer {
    QJsonObject &object;

    template <typename T>
    void operator()(const char *name, const T &value) {
        object.insert(QLatin1StringView(name), Codec<T>::write(value));
    }
    template <typename T>
    void operator()(const char *name, const std::optional<T> &value) {
        if (value)
            (*this)(name, *value);
    }
};

struct Reader {
    const QJsonObject &object;
    bool valid = true;

    template <typename T>
    void operator()(const char *name, T &value) {
        auto parsed = valid ? Codec<T>::read(object.value(QLatin1StringView(name))) : std::nullopt;
        if (parsed)
            value = std::move(*parsed);
        else
            valid = false;
    }
    template <typename T>
    void operator()(const char *name, std::optional<T> &value) {
        const QJsonValue found = object.value(QLatin1StringView(name));
        if (found.isNull() || found.isUndefined())
            value.reset();
        else
            (*this)(name, value.emplace());
    }
};

} // namespace detail

template <Record R>
QJsonObject toJson(const R &record) {
    QJsonObject object;
    R::visitFields(record, detail::Writer{object});
    return object;
}

template <Record R>
std::optional<R> fromJson(const QJsonObject &object) {
    R record;
    detail::Reader reader{object};
    R::visitFields(record, reader);
    return reader.valid ? std::optional(std::move(record)) : std::nullopt;
}

} // namespace orvane::derived
