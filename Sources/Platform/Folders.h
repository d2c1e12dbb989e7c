// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/// Where this user's files live, without a trailing slash. The folders need not exist, but for the last.
namespace orvane::folders {

/// `OrvaneTalk` in the XDG data directory.
QString data();

/// Where a person looks for what they saved: the folder for documents, or the home folder while there is
/// none.
QString documents();

} // namespace orvane::folders
