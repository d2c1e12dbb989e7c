// SPDX-License-Identifier: MIT
#include "ChatList/People/ContactImporter.h"

#include "Platform/DesktopAddressBook.h"

#include <QCoroFuture>
#include <QtConcurrentRun>

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

QString wordsOf(ContactImportError::Case reason) {
    return reason == ContactImportError::Case::accessDenied
               ? u"Доступ к контактам запрещён. Разрешите в Настройках → Конфиденциальность → Контакты."_s
               : u"В адресной книге нет контактов для импорта."_s;
}

} // namespace

ContactImportError::ContactImportError(Case reason)
    : DescribedError(wordsOf(reason))
    , m_reason(reason) {}

ContactImporter::ContactImporter(std::unique_ptr<AddressBook> book, MessengerAPI &api)
    : store(std::move(book))
    , m_api(api) {}

ContactImporter &ContactImporter::shared() {
    static ContactImporter importer(std::make_unique<DesktopAddressBook>());
    return importer;
}

QCoro::Task<bool> ContactImporter::requestAccess() {
    return store->requestAccess();
}

void ContactImporter::fail(ContactImportError::Case reason) {
    const ContactImportError error(reason);
    lastError = localizedDescription(error);
    isImporting = false;
    throw error;
}

QCoro::Task<QList<ImportedContact>> ContactImporter::importContacts() {
    isImporting = true;
    lastError = std::nullopt;
    const bool allowed = co_await requestAccess();
    if (!allowed)
        fail(ContactImportError::Case::accessDenied);
    const QList<AddressBookPerson> people = co_await store->people();
    // A book of many thousand numbers takes its time.
    const QList<ImportedContact> contacts = co_await QtConcurrent::run(&importedContacts, people);
    if (contacts.isEmpty())
        fail(ContactImportError::Case::noContacts);
    importedCount = int(contacts.size());
    isImporting = false;
    co_return contacts;
}

QCoro::Task<void> ContactImporter::importAndSync() {
    const QList<ImportedContact> contacts = co_await importContacts();
    for (const ImportedContact &contact : contacts) {
        const ContactRecord record = contactRecord(contact);
        co_await m_api.addContact(record);
    }
}

} // namespace orvane
