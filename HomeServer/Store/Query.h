// SPDX-License-Identifier: MIT
#pragma once

#include "HomeServer/Store/Database.h"

#include <QJsonValue>
#include <QSqlQuery>
#include <QVariant>

#include <initializer_list>

namespace orvane::homeserver {

// One prepared and executed statement. `values` fill the question marks in order, or by number where all of
// them are numbered ("?1"): an invalid QVariant is NULL, a null text is the empty text. Throws DatabaseFault
// when SQLite refuses.
class Query {
public:
    Query(Database &database, const QString &sql, std::initializer_list<QVariant> values = {});
    Query(Database &database, const QString &sql, const QVariantList &values);

    bool next() { return m_query.next(); }

    bool isNull(int column) const { return m_query.isNull(column); }
    QString text(int column) const { return m_query.value(column).toString(); }
    qint64 integer(int column) const { return m_query.value(column).toLongLong(); }
    double number(int column) const { return m_query.value(column).toDouble(); }
    bool flag(int column) const { return integer(column) != 0; }
    QJsonValue json(int column) const { return QJsonValue::fromVariant(m_query.value(column)); }
    QByteArray bytes(int column) const { return m_query.value(column).toByteArray(); }

    qint64 insertedId() const { return m_query.lastInsertId().toLongLong(); }
    int changedRows() const { return m_query.numRowsAffected(); }

private:
    QSqlQuery m_query;
};

// Runs a statement for its effect; returns the number of rows it changed.
int execute(Database &database, const QString &sql, std::initializer_list<QVariant> values = {});

// Whether the statement yields a row.
bool exists(Database &database, const QString &sql, std::initializer_list<QVariant> values);

// The integer in the first column of the first row, 0 without a row.
qint64 integerOf(Database &database, const QString &sql, std::initializer_list<QVariant> values = {});

// A text that may be absent, as a value to bind.
template <typename Optional>
QVariant nullable(const Optional &value) {
    return value ? QVariant(*value) : QVariant();
}

} // namespace orvane::homeserver
