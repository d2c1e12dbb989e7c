// SPDX-License-Identifier: MIT
#pragma once

#include "Model/ContactRecord.h"
#include "Platform/AddressBookPerson.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace orvane {

/// One number of one person of the address book; the number itself is not kept.
struct ImportedContact {
    QString givenName;
    QString familyName;
    QString fullName;
    /// SHA-256 of the number's digits, in lower-case hexadecimal.
    QString hashedPhone;
    QString phoneLabel;
    std::optional<QString> organization;
    std::optional<QByteArray> avatar;
};

/// SHA-256 of the text's UTF-8 bytes: 64 lower-case hexadecimal digits. Any thread.
QString sha256Text(const QString &text);

/// One record a number, by given name; a number that stands on several cards counts for the first. People
/// without a name and numbers without a digit are left out. Any thread.
QList<ImportedContact> importedContacts(QList<AddressBookPerson> people);

/// As the server is told of it. Any thread.
ContactRecord contactRecord(const ImportedContact &contact);

} // namespace orvane
