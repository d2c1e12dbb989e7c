#include "Session/OrvaneTalkFeatureFlags.h"

#include <QString>
#include <QtGlobal>

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
    return value == QLatin1String("1") || value == QLatin1String("true") || value == QLatin1String("yes") ||
           value == QLatin1String("on");
}

} // namespace orvane::OrvaneTalkFeatureFlags
