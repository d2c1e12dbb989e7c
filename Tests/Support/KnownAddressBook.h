// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/AddressBook.h"

#include <QCoroTimer>

namespace orvane {

/// An address book of people that a test names. Like a real one, it doesn't answer at once.
class KnownAddressBook : public AddressBook {
public:
    bool allowed = true;
    QList<AddressBookPerson> known;

    QCoro::Task<bool> requestAccess() override {
        co_await QCoro::sleepFor(std::chrono::milliseconds(0));
        co_return bool(allowed);
    }
    QCoro::Task<QList<AddressBookPerson>> people() override { co_return QList<AddressBookPerson>(known); }
};

} // namespace orvane
