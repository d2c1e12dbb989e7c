// SPDX-License-Identifier: MIT
#include "Session/OrvaneTalkFeatureFlags.h"

#include <QString>
#include <QtGlobal>

using namespace Qt::StringLiterals;

namespace orvane::OrvaneTalkFeatureFlags {

bool experimentalCrypto() {
    static const bool value = enabled("ORVANETALK_ENABLE_EXPERIMENTAL_CRYPTO");
    return value;
}

bool nativeCalls() {
    static const bool value = enabled("ORVANETALK_ENABLE_NATIVE_CALLS");
    return value;
}

bool enabled(const char *name) {
    const QString value = qEnvironmentVariable(name).trimmed().toLower();
    return value == "1"_L1 || value == "true"_L1 || value == "yes"_L1 || value == "on"_L1;
}

} // namespace orvane::OrvaneTalkFeatureFlags
