// SPDX-License-Identifier: MIT
#include "Base/DescribedError.h"

namespace orvane {

QString localizedDescription(const std::exception &error) {
    return QString::fromUtf8(error.what());
}

} // namespace orvane
