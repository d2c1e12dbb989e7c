// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/Search.h"

#include "HomeServer/Chats/MessageStore.h"
#include "HomeServer/Store/Query.h"

#include <QRegularExpression>

#include <algorithm>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostWords = 16;

// Every word in quotation marks, so that nothing of a query is read as an operator.
QString matchExpression(const QStringList &words, Words mode) {
    QStringList terms;
    for (const QString &word : words)
        terms.append(u'"' + word + u"\"*"_s);
    return terms.join(mode == Words::All ? u" "_s : u" OR "_s);
}

double scoreOf(const QString &content, const QStringList &wanted) {
    const QStringList present = searchWords(content);
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

QStringList searchWords(const QString &query) {
    static const QRegularExpression word(u"[\\p{L}\\p{N}]+"_s);
    QStringList words;
    auto found = word.globalMatch(query);
    while (found.hasNext())
        words.append(found.next().captured().toCaseFolded());
    words.removeDuplicates();
    return words;
}

QJsonArray searchMessages(Database &database, qint64 userId, const QString &query, const SearchScope &scope) {
    const QStringList words = searchWords(query).mid(0, mostWords);
    if (words.isEmpty())
        return {};
    Query rows(database,
               u"SELECT m.id FROM message_words w JOIN messages m ON m.seq = w.rowid "
               "JOIN members k ON k.chat_id = m.chat_id AND k.user_id = ?2 "
               "WHERE message_words MATCH ?1 AND (?3 = '' OR m.chat_id = ?3) "
               "ORDER BY bm25(message_words), m.seq DESC LIMIT ?4"_s,
               {matchExpression(words, scope.words), userId, scope.chatId, scope.limit});
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
