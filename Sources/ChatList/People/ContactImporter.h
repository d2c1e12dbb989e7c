// SPDX-License-Identifier: MIT
#pragma once

#include "Base/DescribedError.h"
#include "Base/Observable.h"
#include "ChatList/People/ImportedContact.h"
#include "Platform/AddressBook.h"
#include "Server/MessengerAPI.h"

#include <QCoroTask>

#include <memory>
#include <optional>

namespace orvane {

/// Why there is nothing to import.
class ContactImportError : public DescribedError {
public:
    enum class Case { accessDenied, noContacts };

    explicit ContactImportError(Case reason);
    Case reason() const { return m_reason; }

private:
    Case m_reason;
};

/// Reads the desktop's address book and tells the server of everybody in it, by the hashes of their numbers.
/// Its object outlives its tasks. Main thread; the book is read elsewhere.
class ContactImporter : public QObject {
    Q_OBJECT
    /// Does not keep a second import from starting.
    OBSERVABLE(bool, isImporting)
    /// Of the last book that was read.
    OBSERVABLE(int, importedCount)
    /// For the person at the screen.
    OBSERVABLE_OPTIONAL(QString, lastError)

public:
    explicit ContactImporter(std::unique_ptr<AddressBook> store, MessengerAPI &api = MessengerAPI::shared());
    /// Over the desktop's address book.
    static ContactImporter &shared();

    /// Whether the address book may be read.
    QCoro::Task<bool> requestAccess();
    /// Throws ContactImportError, and leaves its words in `lastError`.
    QCoro::Task<QList<ImportedContact>> importContacts();
    /// Imports, and adds one contact after the other. The first error ends it; what was added stays. Throws
    /// like `importContacts` and MessengerAPI.
    QCoro::Task<void> importAndSync();

    static QString sha256(const QString &text) { return sha256Text(text); }

private:
    [[noreturn]] void fail(ContactImportError::Case reason);

    const std::unique_ptr<AddressBook> store;
    MessengerAPI &m_api;
};

} // namespace orvane
