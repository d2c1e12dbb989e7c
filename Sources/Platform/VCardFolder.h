// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/AddressBook.h"

#include <QStringList>

namespace orvane {

/// An address book of vCard files (`*.vcf`, `*.vcard`) in folders and the folders within. It is read off the
/// main thread. Access is refused where a folder is there but closed to this user.
class VCardFolder : public AddressBook {
public:
    /// `OrvaneTalk/contacts` and `contacts` in the XDG data directory; the latter is where desktops keep
    /// theirs.
    static QStringList usualFolders();

    explicit VCardFolder(const QStringList &folders = usualFolders())
        : m_folders(folders) {}

    QCoro::Task<bool> requestAccess() override;
    QCoro::Task<QList<AddressBookPerson>> people() override;

private:
    QStringList m_folders;
};

} // namespace orvane
