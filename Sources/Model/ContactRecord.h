// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <optional>

namespace orvane {

/// A person of the address book as the server is told of them: no number, only its hash.
struct ContactRecord {
    /// Equal to `phoneHash`.
    QString id;
    QString displayName;
    QString phoneHash;
    bool isFromAddressBook = false;
    std::optional<QString> organization;
    std::optional<QString> avatarHash;
};

} // namespace orvane
