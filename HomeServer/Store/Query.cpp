// SPDX-License-Identifier: MIT
#include "HomeServer/Store/Query.h"

#include <QRegularExpression>
#include <QSqlError>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

// The driver binds plain question marks only, so numbered ones are spelled out: each becomes a plain one
// with a copy of its value.
QString spellOut(const QString &sql, QVariantList &values) {
    static const QRegularExpression numbered(u"\\?([1-9])"_s);
    if (!sql.contains(numbered))
        return sql;
    QVariantList inOrder;
    auto found = numbered.globalMatch(sql);
    while (found.hasNext())
        inOrder.append(values.at(found.next().captured(1).toInt() - 1));
    values = inOrder;
    return QString(sql).replace(numbered, u"?"_s);
}

} // namespace

Query::Query(Database &database, const QString &sql, std::initializer_list<QVariant> values)
    : Query(database, sql, QVariantList(values)) {}

Query::Query(Database &database, const QString &sql, const QVariantList &values)
    : m_query(database.handle()) {
    QVariantList inOrder = values;
    m_query.setForwardOnly(true);
    if (!m_query.prepare(spellOut(sql, inOrder)))
        throw DatabaseFault(m_query.lastError().text().toStdString());
    for (const QVariant &value : std::as_const(inOrder)) {
        const bool nullText = value.typeId() == QMetaType::QString && value.toString().isNull();
        m_query.addBindValue(nullText ? QVariant(QString::fromLatin1("")) : value);
    }
    if (!m_query.exec())
        throw DatabaseFault(m_query.lastError().text().toStdString());
}

int execute(Database &database, const QString &sql, std::initializer_list<QVariant> values) {
    return Query(database, sql, values).changedRows();
}

bool exists(Database &database, const QString &sql, std::initializer_list<QVariant> values) {
    return Query(database, sql, values).next();
}

qint64 integerOf(Database &database, const QString &sql, std::initializer_list<QVariant> values) {
    Query query(database, sql, values);
    return query.next() ? query.integer(0) : 0;
}

} // namespace orvane::homeserver
