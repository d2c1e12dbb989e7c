// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/AddressBookPerson.h"

#include <QList>
#include <QString>

class QIODevice;

namespace orvane {

/// What a vCard tells of a person.
struct VCard {
    AddressBookPerson person;
    /// Where the picture is, for a card that only points to one.
    QString pictureAddress;
};

/// All cards of a file or a list, in versions 2.1, 3.0 (RFC 2426) and 4.0 (RFC 6350), in one pass: what it
/// takes doesn't grow with the pictures, of which at most 256 KiB each are kept. Broken lines are skipped; a
/// card that the end cuts off is left out. The device is open for reading. Any thread.
QList<VCard> readVCards(QIODevice &from);

} // namespace orvane
