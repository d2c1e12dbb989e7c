// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Which home server this process talks to. Each value is read from the environment once, at its first use,
/// and is not checked to be a URL. Any thread.
namespace orvane::OrvaneTalkEndpoint {

/// `ORVANETALK_API_BASE`, else the server that the build names: a URL without path and trailing slash.
const QString &baseURL();

/// `ORVANETALK_WS_URL`, else the socket that the build names.
const QString &webSocketURL();

/// The variable without white space at both ends, or `fallback` when it is absent or blank.
QString configured(const char *name, const QString &fallback);

} // namespace orvane::OrvaneTalkEndpoint
