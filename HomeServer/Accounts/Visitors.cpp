// SPDX-License-Identifier: MIT
#include "HomeServer/Accounts/Visitors.h"

#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr double hour = 3600;
constexpr double remembered = 25 * hour; // a day, and the hour in which nothing is written anew
constexpr qsizetype sweepSize = 10'000;
constexpr int networkBytes = 8; // of an IPv6 address

} // namespace

QString sourceOf(const QHostAddress &address) {
    if (address.protocol() != QAbstractSocket::IPv6Protocol)
        return address.toString();
    Q_IPV6ADDR bytes = address.toIPv6Address();
    for (int i = networkBytes; i < 16; ++i)
        bytes[i] = 0;
    return QHostAddress(bytes).toString();
}

void Visitors::note(const QHostAddress &address, qint64 userId, const QString &chatId, double now) {
    const QString source = sourceOf(address);
    const QString key = u"%1 %2 %3"_s.arg(source, QString::number(userId), chatId);
    if (m_written.value(key) > now - hour)
        return;
    if (m_written.size() >= sweepSize)
        m_written.clear();
    m_written[key] = now;
    execute(
        m_database,
        // What they did may have been to delete their account.
        u"INSERT INTO visitors(source, user_id, chat_id, seen_at) SELECT ?, id, ?, ? FROM users WHERE id = ? "
        "ON CONFLICT DO UPDATE SET seen_at = excluded.seen_at"_s,
        {source, chatId, now, userId});
    execute(m_database, u"DELETE FROM visitors WHERE seen_at < ?"_s, {now - remembered});
}

bool Visitors::isMembersAddress(const QHostAddress &address, double now) const {
    return exists(m_database, u"SELECT 1 FROM visitors WHERE source = ? AND seen_at > ?"_s,
                  {sourceOf(address), now - remembered});
}

bool Visitors::isUsersAddress(const QHostAddress &address, qint64 userId, double now) const {
    return exists(m_database, u"SELECT 1 FROM visitors WHERE source = ? AND user_id = ? AND seen_at > ?"_s,
                  {sourceOf(address), userId, now - remembered});
}

bool Visitors::wasActive(const QHostAddress &address, const QString &chatId, double now) const {
    return exists(m_database, u"SELECT 1 FROM visitors WHERE source = ? AND chat_id = ? AND seen_at > ?"_s,
                  {sourceOf(address), chatId, now - remembered});
}

} // namespace orvane::homeserver
