// SPDX-License-Identifier: MIT
#include "HomeServer/Store/Commits.h"

#include "HomeServer/Store/Query.h"

#include <utility>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

Commits::Commits(Database &database)
    : m_database(database) {
    m_turn.setSingleShot(true);
    m_turn.setInterval(0);
    QObject::connect(&m_turn, &QTimer::timeout, &m_turn, [this] { flush(); });
}

Commits::~Commits() {
    commit();
}

void Commits::run(const std::function<void()> &act) {
    if (!m_open) {
        // Taking the write lock at once keeps a reader from failing half-way when it becomes a writer.
        execute(m_database, u"BEGIN IMMEDIATE"_s);
        m_open = true;
        m_turn.start();
    }
    execute(m_database, u"SAVEPOINT piece"_s);
    try {
        act();
    } catch (...) {
        execute(m_database, u"ROLLBACK TO piece"_s);
        execute(m_database, u"RELEASE piece"_s);
        throw;
    }
    execute(m_database, u"RELEASE piece"_s);
}

bool Commits::commit() {
    m_turn.stop();
    if (!std::exchange(m_open, false))
        return true;
    try {
        execute(m_database, u"COMMIT"_s);
    } catch (const DatabaseFault &fault) {
        qWarning("nothing could be committed: %s", fault.what());
        QSqlQuery(m_database.handle()).exec(u"ROLLBACK"_s);
        return false;
    }
    if (std::exchange(m_scrub, false))
        execute(m_database, u"PRAGMA wal_checkpoint(TRUNCATE)"_s);
    return true;
}

void Commits::flush() {
    const bool committed = commit();
    // A step may begin the next group.
    for (const Step &step : std::exchange(m_steps, {})) {
        try {
            step(committed);
        } catch (const std::exception &fault) {
            qWarning("a step after a commit failed: %s", fault.what());
        }
    }
}

} // namespace orvane::homeserver
