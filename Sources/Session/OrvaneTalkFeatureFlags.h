// SPDX-License-Identifier: MIT
#pragma once

/// Features that are off unless the environment turns them on. Each is read once, at its first use. Any
/// thread.
namespace orvane::OrvaneTalkFeatureFlags {

/// `ORVANETALK_ENABLE_EXPERIMENTAL_CRYPTO`: the end-to-end layer.
bool experimentalCrypto();

/// `ORVANETALK_ENABLE_NATIVE_CALLS`: the voice call button.
bool nativeCalls();

/// True for "1", "true", "yes" and "on" in any case, with white space around them or not.
bool enabled(const char *name);

} // namespace orvane::OrvaneTalkFeatureFlags
