// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Security/Brake.h"

namespace orvane::homeserver {

// What people may do to others only so often.
struct Brakes {
    // One person's one-time keys, by one asker. Without one they still get the rest of the bundle.
    Brake oneTimeKeys{5, 3600};
    // Adding people who aren't contacts to a chat of several.
    Brake additions{50, 3600};
    // Questions to the model without a token, from one address.
    Brake freeQuestions{60, 3600};
};

} // namespace orvane::homeserver
