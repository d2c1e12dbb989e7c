// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerUser.h"

namespace orvane {

/// The display name of somebody known, else `otherwise`.
inline QString nameOf(const QString &userID, const Contacts &contacts, const QString &otherwise) {
    const auto user = contacts.constFind(userID);
    return user == contacts.constEnd() ? otherwise : user->displayName;
}

} // namespace orvane
