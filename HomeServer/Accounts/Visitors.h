// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QHostAddress>
#include <QString>

namespace orvane::homeserver {

class Database;

// From which addresses signed-in members have come in the last day, and in which chats they were active from
// there: what stands in for a token where clients send none. It is kept over a restart, to the hour.
class Visitors {
public:
    explicit Visitors(Database &database)
        : m_database(database) {}

    // A member did something, in a chat or in none (an empty id). Belongs into the transaction of what they
    // did.
    void note(const QHostAddress &address, qint64 userId, const QString &chatId, double now);

    bool isMembersAddress(const QHostAddress &address, double now) const;
    bool isUsersAddress(const QHostAddress &address, qint64 userId, double now) const;
    bool wasActive(const QHostAddress &address, const QString &chatId, double now) const;

private:
    Database &m_database;
    QHash<QString, double> m_written; // by all but the time
};

// An address as brakes and quotas count it: of IPv6 the network, since a line has one to itself.
QString sourceOf(const QHostAddress &address);

} // namespace orvane::homeserver
