// SPDX-License-Identifier: MIT
#include "Base/NotificationCentre.h"

namespace orvane {

NotificationCentre &NotificationCentre::shared() {
    static auto *centre = new NotificationCentre;
    return *centre;
}

} // namespace orvane
