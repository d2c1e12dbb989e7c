// SPDX-License-Identifier: MIT
#pragma once

#include "Encryption/MessengerCrypto.h"
#include "Encryption/MessengerZkCrypto.h"

#include <functional>

namespace orvane {

/// Both engines, each made at its first use. Whoever is given none of these has the end-to-end layer off.
struct EndToEnd {
    std::function<MessengerCrypto &()> crypto = &MessengerCrypto::shared;
    std::function<MessengerZkCrypto &()> zkCrypto = &MessengerZkCrypto::shared;
};

} // namespace orvane
