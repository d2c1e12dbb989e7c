// SPDX-License-Identifier: MIT
#include "Base/LogLine.h"

#include <cstdio>

namespace orvane {

void logLine(const QString &line) {
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

} // namespace orvane
