// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Json.h"
#include "Model/DerivedJson.h"

#include <cstdio>
#include <cstdlib>

namespace orvane {

/// Stops the run with the words for what does not hold.
inline void invariant(bool holds, const char *words) {
    if (holds)
        return;
    std::fprintf(stderr, "Broken: %s\n", words);
    std::abort();
}

/// The top level of the bytes; undefined for bytes that are no JSON.
inline QJsonValue parsed(const QByteArray &bytes) {
    try {
        return json::parse(bytes);
    } catch (const JsonError &) {
        return QJsonValue(QJsonValue::Undefined);
    }
}

/// A record written, turned into bytes and read again is the same record.
template <Record R>
void survivesStoring(const R &record) {
    const QByteArray bytes = json::compact(derived::toJson(record));
    const auto again = derived::fromJson<R>(parsed(bytes).toObject());
    invariant(again.has_value(), "a written record can be read");
    invariant(*again == record, "a record that was written and read is the same");
    invariant(qHash(*again, 0) == qHash(record, 0), "records that are the same have the same hash");
}

} // namespace orvane
