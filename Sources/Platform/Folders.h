#pragma once

#include <QString>

/// Where this user's files live, without a trailing slash. The folders need not exist.
namespace orvane::folders {

/// `OrvaneTalk` in the XDG data directory.
QString data();

} // namespace orvane::folders
