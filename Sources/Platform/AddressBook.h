// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/AddressBookPerson.h"

#include <QCoroTask>

namespace orvane {

/// The desktop's address book. Main thread, on which nothing waits; it outlives its tasks, which don't throw.
class AddressBook {
public:
    virtual ~AddressBook() = default;

    /// Whether this program may read it. A book that isn't there may be read.
    virtual QCoro::Task<bool> requestAccess() = 0;
    /// Everybody in it, in no particular order. What can't be read is left out.
    virtual QCoro::Task<QList<AddressBookPerson>> people() = 0;

protected:
    AddressBook() = default;
    AddressBook(const AddressBook &) = default;
    AddressBook &operator=(const AddressBook &) = default;
};

} // namespace orvane
