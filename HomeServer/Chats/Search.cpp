// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/Search.h"

#include "HomeServer/Chats/MessageStore.h"
#include "HomeServer/Store/Query.h"
#include "HomeServer/Store/Words.h"

#include <algorithm>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostWords = 16;

// The last text that begins with a word, or rather the first behind all of them.
QString beyond(const QString &word) {
    static constexpr char32_t last = 0x10ffff;
    return word + QString::fromUcs4(&last, 1);
}

double scoreOf(const QString &content, const QStringList &wanted) {
    const QStringList present = wordsOf(content);
    const auto hits = std::ranges::count_if(wanted, [&](const QString &word) {
        return std::ranges::any_of(present, [&](const QString &other) { return other.startsWith(word); });
    });
    return static_cast<double>(hits) / static_cast<double>(wanted.size());
}

// A chat's title, or in a direct chat the name of the other person.
QString chatTitle(Database &database, const QString &chatId, qint64 userId) {
    Query row(
        database,
        u"SELECT coalesce(c.title, (SELECT u.display_name FROM members k JOIN users u ON u.id = k.user_id "
        "WHERE k.chat_id = c.id AND k.user_id <> ?2 LIMIT 1), '') FROM chats c WHERE c.id = ?1"_s,
        {chatId, userId});
    return row.next() ? row.text(0) : QString();
}

} // namespace

QJsonArray searchMessages(Database &database, qint64 userId, const QString &query, const SearchScope &scope) {
    const QStringList words = wordsOf(query).mid(0, mostWords);
    if (words.isEmpty())
        return {};
    QVariantList values{userId};
    QStringList finds;
    for (const QString &word : words) {
        finds.append(
            u"SELECT seq, %1 AS word FROM message_words WHERE word >= ? AND word < ?"_s.arg(finds.size()));
        values << word << beyond(word);
    }
    values << (scope.words == Words::All ? words.size() : 1) << scope.chatId << scope.chatId << scope.limit;
    Query rows(database,
               u"SELECT m.id FROM messages m JOIN members k ON k.chat_id = m.chat_id AND k.user_id = ? "
               "JOIN (SELECT seq, count(DISTINCT word) AS hits FROM (%1) f GROUP BY seq "
               "HAVING count(DISTINCT word) >= ?) found ON found.seq = m.seq "
               "WHERE (? = '' OR m.chat_id = ?) ORDER BY found.hits DESC, m.seq DESC LIMIT ?"_s.arg(
                   finds.join(u" UNION ALL "_s)),
               values);
    QStringList ids;
    while (rows.next())
        ids.append(rows.text(0));
    QJsonArray results;
    for (const QString &id : std::as_const(ids)) {
        QJsonObject record = messageRecords(database, userId, u"m.id = ?"_s, {id}, {}).first().toObject();
        record["chat_title"_L1] = chatTitle(database, record["chat_id"_L1].toString(), userId);
        record["score"_L1] = scoreOf(record["content"_L1].toString(), words);
        results.append(record);
    }
    return results;
}

} // namespace orvane::homeserver
