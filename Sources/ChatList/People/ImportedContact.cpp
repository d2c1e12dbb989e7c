// SPDX-License-Identifier: MIT
#include "ChatList/People/ImportedContact.h"

#include "Encryption/Primitives.h"
#include "Model/Words.h"

#include <QSet>

#include <algorithm>

namespace orvane {

namespace {

constexpr qsizetype avatarHashLength = 16;

QString hexSha256(QByteArrayView bytes) {
    return QString::fromLatin1(primitives::sha256(bytes).toHex());
}

// No country code is added or removed.
QString digitsOf(const QString &number) {
    QString digits;
    for (const char32_t c : number.toUcs4())
        if (QChar::isDigit(c))
            digits.append(QChar::fromUcs4(c));
    return digits;
}

} // namespace

QString sha256Text(const QString &text) {
    return hexSha256(text.toUtf8());
}

QList<ImportedContact> importedContacts(QList<AddressBookPerson> people) {
    std::stable_sort(people.begin(), people.end(),
                     [](const AddressBookPerson &a, const AddressBookPerson &b) {
                         return QString::localeAwareCompare(a.givenName, b.givenName) < 0;
                     });
    QList<ImportedContact> contacts;
    QSet<QString> seen;
    for (const AddressBookPerson &person : people) {
        const QString fullName = withoutBlanks(person.givenName + u' ' + person.familyName);
        if (fullName.isEmpty())
            continue;
        for (const PhoneNumber &number : person.numbers) {
            const QString digits = digitsOf(number.value);
            const QString hash = digits.isEmpty() ? QString() : sha256Text(digits);
            if (hash.isEmpty() || seen.contains(hash))
                continue;
            seen.insert(hash);
            ImportedContact contact{
                person.givenName, person.familyName, fullName, hash, number.label, {}, {}};
            if (!person.organization.isEmpty())
                contact.organization = person.organization;
            if (!person.picture.isEmpty())
                contact.avatar = person.picture;
            contacts.append(contact);
        }
    }
    return contacts;
}

ContactRecord contactRecord(const ImportedContact &contact) {
    ContactRecord record;
    record.id = contact.hashedPhone;
    record.displayName = contact.fullName;
    record.phoneHash = contact.hashedPhone;
    record.isFromAddressBook = true;
    record.organization = contact.organization;
    // Pictures are hashed as texts, and few are one: most have the hash of the empty text.
    if (contact.avatar)
        record.avatarHash =
            hexSha256(contact.avatar->isValidUtf8() ? *contact.avatar : QByteArray()).left(avatarHashLength);
    return record;
}

} // namespace orvane
