// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace orvane {

struct PhoneNumber {
    /// As it is written in the book.
    QString value;
    /// "mobile", "home", "work"…, or the person's own word; empty where the book has none.
    QString label;

    bool operator==(const PhoneNumber &) const = default;
};

/// Somebody in the desktop's address book. Whatever the book doesn't say is empty.
struct AddressBookPerson {
    QString givenName;
    QString familyName;
    QString organization;
    QList<PhoneNumber> numbers;
    /// Bytes of an image file; of a large one only the beginning.
    QByteArray picture;

    bool operator==(const AddressBookPerson &) const = default;
};

} // namespace orvane
