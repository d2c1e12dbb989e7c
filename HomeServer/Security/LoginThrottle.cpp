// SPDX-License-Identifier: MIT
#include "HomeServer/Security/LoginThrottle.h"

#include "HomeServer/Accounts/Visitors.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr double minute = 60;
constexpr double quarter = 15 * minute;

constexpr qint64 mostOfNameAndSource = 5; // in a minute
constexpr qint64 mostOfName = 30;         // in a quarter of an hour
constexpr qint64 mostOfSource = 60;       // in a quarter of an hour
constexpr qint64 mostInAll = 600;         // in a minute

} // namespace

bool LoginThrottle::isClosed(const QString &username, const QHostAddress &address, double now) {
    const auto count = [this](const QString &condition, std::initializer_list<QVariant> values) {
        return integerOf(m_database, u"SELECT count(*) FROM sign_in_failures WHERE "_s + condition, values);
    };
    const QString source = sourceOf(address);
    if (count(u"name_key = ? AND source = ? AND at > ?"_s, {username, source, now - minute}) >=
            mostOfNameAndSource ||
        count(u"source = ? AND at > ?"_s, {source, now - quarter}) >= mostOfSource ||
        count(u"at > ?"_s, {now - minute}) >= mostInAll)
        return true;
    if (count(u"name_key = ? AND at > ?"_s, {username, now - quarter}) < mostOfName)
        return false;
    // A stranger can't lock the bearer out of where they are at home.
    const qint64 user = integerOf(m_database, u"SELECT id FROM users WHERE username_key = ?"_s, {username});
    return !m_visitors.isUsersAddress(address, user, now);
}

void LoginThrottle::failed(const QString &username, const QHostAddress &address, double now) {
    execute(m_database, u"DELETE FROM sign_in_failures WHERE at <= ?"_s, {now - quarter});
    execute(m_database, u"INSERT INTO sign_in_failures(name_key, source, at) VALUES (?, ?, ?)"_s,
            {username, sourceOf(address), now});
}

void LoginThrottle::succeeded(const QString &username, const QHostAddress &address) {
    execute(m_database, u"DELETE FROM sign_in_failures WHERE name_key = ? AND source = ?"_s,
            {username, sourceOf(address)});
}

} // namespace orvane::homeserver
