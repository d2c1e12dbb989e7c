// SPDX-License-Identifier: MIT
#pragma once

#include <QHostAddress>
#include <QString>

namespace orvane::homeserver {

class Database;
class Visitors;

// Counts failed sign-ins, over a restart too. The door is closed after five within a minute for one name from
// one address; after thirty within a quarter of an hour for one name from addresses that its bearer hasn't
// used in the last day; after sixty in that time from one address; and after six hundred within a minute in
// all. Names are keys; times are Unix seconds given by the caller.
class LoginThrottle {
public:
    LoginThrottle(Database &database, const Visitors &visitors)
        : m_database(database)
        , m_visitors(visitors) {}

    bool isClosed(const QString &username, const QHostAddress &address, double now);
    void failed(const QString &username, const QHostAddress &address, double now);
    void succeeded(const QString &username, const QHostAddress &address);

private:
    Database &m_database;
    const Visitors &m_visitors;
};

} // namespace orvane::homeserver
