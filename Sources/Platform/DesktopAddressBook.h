// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/EvolutionAddressBook.h"
#include "Platform/VCardFolder.h"

namespace orvane {

/// Evolution Data Server's address books where that is there and has somebody in them, else the folders of
/// vCards.
class DesktopAddressBook : public AddressBook {
public:
    explicit DesktopAddressBook(const QDBusConnection &bus = QDBusConnection::sessionBus())
        : m_evolution(bus) {}

    QCoro::Task<bool> requestAccess() override;
    QCoro::Task<QList<AddressBookPerson>> people() override;

private:
    EvolutionAddressBook m_evolution;
    VCardFolder m_folder;
};

} // namespace orvane
