// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/ChatStore.h"

#include "HomeServer/Accounts/Users.h"
#include "HomeServer/Chats/Events.h"
#include "HomeServer/Robots/RobotAccounts.h"
#include "HomeServer/Security/Brakes.h"
#include "HomeServer/Security/Tokens.h"
#include "HomeServer/Store/Query.h"

#include <QHash>

#include <algorithm>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

QList<qint64> idsOf(Query query) {
    QList<qint64> ids;
    while (query.next())
        ids.append(query.integer(0));
    return ids;
}

QHash<QString, QJsonArray> participants(Database &database, qint64 userId, const QString &chatId) {
    QHash<QString, QJsonArray> result;
    Query rows(database,
               u"SELECT k.chat_id, k.user_id FROM members k JOIN members mine ON mine.chat_id = k.chat_id "
               "WHERE mine.user_id = ?1 AND (?2 = '' OR k.chat_id = ?2) ORDER BY k.rowid"_s,
               {userId, chatId});
    while (rows.next())
        result[rows.text(0)].append(QJsonObject{{"user_id"_L1, rows.integer(1)}});
    return result;
}

QJsonValue textOrNull(const Query &row, int column) {
    return row.isNull(column) ? QJsonValue() : QJsonValue(row.text(column));
}

// Nobody is put into groups by strangers without end.
void brakeAdditions(Work &work, qint64 owner, const QList<qint64> &others) {
    for (const qint64 other : others) {
        const bool contact =
            exists(work.database(), u"SELECT 1 FROM contacts WHERE user_id = ? AND contact_id = ?"_s,
                   {owner, other});
        if (!contact && !work.services.brakes.additions.allows(QString::number(owner), work.services.now()))
            throw Refusal(429, "too_many_additions");
    }
}

} // namespace

QString createChat(Work &work, const NewChat &chat, qint64 owner, const QList<qint64> &others) {
    if (chat.type != "direct"_L1)
        brakeAdditions(work, owner, others);
    const QString id = newId();
    execute(work.database(),
            u"INSERT INTO chats(id, type, title, ai_enabled, federated, zk_mode, room_id, created_at) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, ?)"_s,
            {id, chat.type, nullable(chat.title), chat.aiEnabled, chat.federated, chat.zkMode,
             nullable(chat.roomId), work.services.now()});
    addMember(work, id, owner, u"owner"_s);
    for (const qint64 other : others)
        addMember(work, id, other);
    return id;
}

QString directChat(Work &work, qint64 one, qint64 other) {
    const auto [low, high] = std::minmax(one, other);
    const QString key = u"%1:%2"_s.arg(low).arg(high);
    Query found(work.database(), u"SELECT id FROM chats WHERE direct_key = ?"_s, {key});
    if (found.next())
        return found.text(0);
    const QString id = createChat(work, {.type = u"direct"_s}, one, {other});
    execute(work.database(), u"UPDATE chats SET direct_key = ? WHERE id = ?"_s, {key, id});
    return id;
}

QString savedChat(Work &work, qint64 userId) {
    Query found(work.database(), u"SELECT id FROM chats WHERE saved_of = ?"_s, {userId});
    if (found.next())
        return found.text(0);
    const QString id = createChat(work, {.type = u"direct"_s, .title = u"Saved Messages"_s}, userId, {});
    execute(work.database(), u"UPDATE chats SET saved_of = ? WHERE id = ?"_s, {userId, id});
    return id;
}

QList<qint64> otherPeople(Database &database, const QList<qint64> &ids, qint64 owner) {
    QList<qint64> others;
    for (const qint64 id : ids) {
        if (id == 0 || id == owner || others.contains(id))
            continue;
        if (!userExists(database, id))
            refuseNotFound();
        if (exists(database, u"SELECT 1 FROM bots WHERE user_id = ? AND is_public = 0 AND owner_id <> ?"_s,
                   {id, owner}))
            refuseForbidden();
        others.append(id);
    }
    return others;
}

void addMember(Work &work, const QString &chatId, qint64 userId, const QString &role) {
    execute(work.database(),
            u"INSERT INTO members(chat_id, user_id, role, read_seq, joined_at) VALUES (?, ?, ?, "
            "(SELECT coalesce(max(seq), 0) FROM messages WHERE chat_id = ?), ?) ON CONFLICT DO NOTHING"_s,
            {chatId, userId, role.isEmpty() ? u"member"_s : role, chatId, work.services.now()});
}

void welcome(Work &work, qint64 userId) {
    const QString lobby = QString::fromLatin1(lobbyId);
    work.tell(members(work.database(), lobby), statusEvent(userId, false));
    addMember(work, lobby, userId);
    for (const qint64 robot : builtInRobots(work.database()))
        directChat(work, userId, robot);
}

void requireMember(Database &database, const QString &chatId, qint64 userId) {
    if (exists(database, u"SELECT 1 FROM members WHERE chat_id = ? AND user_id = ?"_s, {chatId, userId}))
        return;
    if (exists(database, u"SELECT 1 FROM chats WHERE id = ?"_s, {chatId}))
        refuseForbidden();
    refuseNotFound();
}

void requireOwner(Database &database, const QString &chatId, qint64 userId) {
    if (!exists(database, u"SELECT 1 FROM members WHERE chat_id = ? AND user_id = ? AND role = 'owner'"_s,
                {chatId, userId}))
        refuseForbidden();
}

QList<qint64> members(Database &database, const QString &chatId) {
    return idsOf(
        Query(database, u"SELECT user_id FROM members WHERE chat_id = ? ORDER BY rowid"_s, {chatId}));
}

QList<qint64> acquaintances(Database &database, qint64 userId) {
    return idsOf(Query(database,
                       u"SELECT k.user_id FROM members k JOIN members mine ON mine.chat_id = k.chat_id "
                       "WHERE mine.user_id = ?1 AND k.user_id <> ?1 "
                       "UNION SELECT contact_id FROM contacts WHERE user_id = ?1"_s,
                       {userId}));
}

qint64 syncCursor(Database &database, qint64 userId) {
    return integerOf(database,
                     u"SELECT coalesce(max((SELECT max(seq) FROM messages WHERE chat_id = k.chat_id)), 0) "
                     "FROM members k WHERE k.user_id = ?"_s,
                     {userId});
}

QJsonArray chatRecords(Database &database, qint64 userId, const ChatFilter &filter) {
    const auto people = participants(database, userId, filter.id);
    Query rows(database,
               u"SELECT c.id, c.type, c.title, c.ai_enabled, c.federated, c.zk_mode, c.room_id, "
               "last.content, last.created_at, "
               "(SELECT count(*) FROM messages n WHERE n.chat_id = c.id AND n.seq > k.read_seq "
               "AND n.sender_id <> k.user_id) "
               "FROM members k JOIN chats c ON c.id = k.chat_id "
               "LEFT JOIN messages last ON last.seq = (SELECT max(seq) FROM messages WHERE chat_id = c.id) "
               "WHERE k.user_id = ?1 AND (?2 = '' OR c.type = ?2) AND (?3 = '' OR c.id = ?3) "
               "ORDER BY coalesce(last.created_at, c.created_at) DESC, c.rowid DESC"_s,
               {userId, filter.type, filter.id});
    QJsonArray chats;
    while (rows.next())
        chats.append(
            QJsonObject{{"id"_L1, rows.text(0)},
                        {"type"_L1, rows.text(1)},
                        {"title"_L1, textOrNull(rows, 2)},
                        {"participants"_L1, people.value(rows.text(0))},
                        {"last_message"_L1, textOrNull(rows, 7)},
                        {"last_msg_at"_L1, rows.isNull(8) ? QJsonValue() : QJsonValue(rows.number(8))},
                        {"unread_count"_L1, rows.integer(9)},
                        {"ai_enabled"_L1, rows.flag(3)},
                        {"federated"_L1, rows.flag(4)},
                        {"zk_mode"_L1, rows.flag(5)},
                        {"room_id"_L1, textOrNull(rows, 6)}});
    return chats;
}

QJsonObject chatRecord(Database &database, const QString &chatId, qint64 userId) {
    const QJsonArray found = chatRecords(database, userId, {.id = chatId});
    if (found.isEmpty())
        refuseNotFound();
    return found.first().toObject();
}

} // namespace orvane::homeserver
