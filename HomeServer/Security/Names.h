// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

namespace orvane::homeserver {

// What two usernames are compared by: the same letters in another case or form are the same name.
QString nameKey(const QString &name);

// What a name looks like (Unicode TR39): names with the same one can't be told apart by eye.
QString nameSkeleton(const QString &name);

// Whether a name may be taken by a new account: letters of one script, beside Latin ones of East Asian
// scripts and signs of none, without blanks that can't be seen and without what has no shape of its own.
bool isHonestUsername(const QString &name);

// Names that only the server gives: those of robots, and those that look like one.
bool isReservedName(const QString &username);

// A name to show may hold whatever people write their names with, joiners too, but nothing that turns the
// writing round or can't be seen at all.
bool isShowable(const QString &name);

} // namespace orvane::homeserver
