// SPDX-License-Identifier: MIT
#include "HomeServer/Store/Database.h"

#include "HomeServer/Store/Query.h"
#include "HomeServer/Store/Schema.h"

#include <QSqlError>
#include <QUuid>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

Database::Database(const QString &path)
    : m_name(u"homeserver-"_s + QUuid::createUuid().toString(QUuid::Id128))
    , m_handle(QSqlDatabase::addDatabase(u"QSQLITE"_s, m_name)) {
    m_handle.setDatabaseName(path);
    m_handle.setConnectOptions(u"QSQLITE_BUSY_TIMEOUT=5000"_s);
    if (!m_handle.open())
        throw DatabaseFault(m_handle.lastError().text().toStdString());
    execute(*this, u"PRAGMA journal_mode = WAL"_s);
    // Whoever was told that something is done finds it done after a loss of power.
    execute(*this, u"PRAGMA synchronous = FULL"_s);
    execute(*this, u"PRAGMA secure_delete = ON"_s);
    execute(*this, u"PRAGMA foreign_keys = ON"_s);
    migrate(*this);
}

Database::~Database() {
    m_handle.close();
    m_handle = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

Transaction::Transaction(Database &database)
    : m_database(database) {
    // Taking the write lock at once keeps a reader from failing half-way when it becomes a writer.
    execute(m_database, u"BEGIN IMMEDIATE"_s);
}

Transaction::~Transaction() {
    if (m_open)
        QSqlQuery(m_database.handle()).exec(u"ROLLBACK"_s);
}

void Transaction::commit() {
    execute(m_database, u"COMMIT"_s);
    m_open = false;
}

} // namespace orvane::homeserver
