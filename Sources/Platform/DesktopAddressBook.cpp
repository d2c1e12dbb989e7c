// SPDX-License-Identifier: MIT
#include "Platform/DesktopAddressBook.h"

namespace orvane {

QCoro::Task<bool> DesktopAddressBook::requestAccess() {
    const bool isThere = co_await m_evolution.isThere();
    if (isThere)
        co_return co_await m_evolution.requestAccess();
    co_return co_await m_folder.requestAccess();
}

QCoro::Task<QList<AddressBookPerson>> DesktopAddressBook::people() {
    QList<AddressBookPerson> found = co_await m_evolution.people();
    if (found.isEmpty())
        found = co_await m_folder.people();
    co_return QList<AddressBookPerson>(found);
}

} // namespace orvane
