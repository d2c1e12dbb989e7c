#pragma once

#include <QString>
#include <QUuid>

namespace orvane {

/// A random UUID (RFC 9562, version 4) as upper-case text without braces. Any thread.
inline QString freshId() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

} // namespace orvane
