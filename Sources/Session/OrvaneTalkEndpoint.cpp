// SPDX-License-Identifier: MIT
#include "Session/OrvaneTalkEndpoint.h"

#include <QtGlobal>

namespace orvane::OrvaneTalkEndpoint {

const QString &baseURL() {
    static const QString url = configured("ORVANETALK_API_BASE", QStringLiteral(ORVANETALK_DEFAULT_API_BASE));
    return url;
}

const QString &webSocketURL() {
    static const QString url = configured("ORVANETALK_WS_URL", QStringLiteral(ORVANETALK_DEFAULT_WS_URL));
    return url;
}

QString configured(const char *name, const QString &fallback) {
    const QString value = qEnvironmentVariable(name).trimmed();
    return value.isEmpty() ? fallback : value;
}

} // namespace orvane::OrvaneTalkEndpoint
