// SPDX-License-Identifier: MIT
#pragma once

#include <QSqlDatabase>
#include <QString>

#include <stdexcept>

namespace orvane::homeserver {

// A statement that failed for a reason no request is to blame for.
class DatabaseFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The one SQLite connection of a server: write-ahead log, foreign keys, busy time-out 5 s. It belongs to
// the thread that made it. The constructor throws DatabaseFault when the file can't be opened or was made
// by a newer server.
class Database {
public:
    explicit Database(const QString &path);
    ~Database();
    Q_DISABLE_COPY_MOVE(Database)

    QSqlDatabase &handle() { return m_handle; }

private:
    QString m_name;
    QSqlDatabase m_handle;
};

// Rolls back at the end of its scope unless commit() was called. Does not nest.
class Transaction {
public:
    explicit Transaction(Database &database);
    ~Transaction();
    Q_DISABLE_COPY_MOVE(Transaction)

    void commit();

private:
    Database &m_database;
    bool m_open = true;
};

} // namespace orvane::homeserver
