// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/AddressBook.h"

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QHash>
#include <QString>

#include <optional>

namespace orvane {

/// The address books of Evolution Data Server, over its own D-Bus interfaces (SourceManager,
/// AddressBookFactory, AddressBook). The bus starts its services where they don't run yet. Access is refused
/// where the bus says so.
class EvolutionAddressBook : public AddressBook {
public:
    explicit EvolutionAddressBook(const QDBusConnection &bus = QDBusConnection::sessionBus())
        : m_bus(bus) {}

    /// Whether its services run or can be started.
    QCoro::Task<bool> isThere();
    QCoro::Task<bool> requestAccess() override;
    QCoro::Task<QList<AddressBookPerson>> people() override;

private:
    struct Services {
        QString sources;
        QString addressBooks;
    };
    struct Sources {
        bool refused = false;
        QHash<QString, QString> keyFiles;
    };

    QCoro::Task<std::optional<Services>> services();
    QCoro::Task<Sources> sources(QString service);
    QCoro::Task<QStringList> cards(QString service, QString bookId);
    QDBusPendingCall call(const QString &service, const QString &path, const QString &interface,
                          const QString &method, const QVariantList &arguments = {});

    QDBusConnection m_bus;
};

} // namespace orvane
