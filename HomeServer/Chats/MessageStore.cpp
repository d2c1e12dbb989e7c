// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/MessageStore.h"

#include "HomeServer/Accounts/Users.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/Events.h"
#include "HomeServer/Files/LostFiles.h"
#include "HomeServer/Operations/Idempotency.h"
#include "HomeServer/Robots/RobotRunner.h"
#include "HomeServer/Security/Tokens.h"
#include "HomeServer/Store/Query.h"
#include "HomeServer/Store/Words.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QSet>
#include <QUuid>

#include <algorithm>
#include <vector>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> jsonText(const std::optional<QJsonObject> &object) {
    if (!object)
        return std::nullopt;
    return QString::fromUtf8(QJsonDocument(*object).toJson(QJsonDocument::Compact));
}

QJsonObject parsed(const QString &text) {
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

// The columns that recordOf() reads, of `messages m`; the first parameter is the reader.
const QString recordColumns =
    u"m.seq, m.id, m.chat_id, m.sender_id, m.type, m.content, m.created_at, m.edited_at, m.reply_to, "
    "m.forwarded_from, m.zk_payload, "
    "EXISTS (SELECT 1 FROM stars s WHERE s.message_id = m.id AND s.user_id = ?)"_s;

QJsonObject recordOf(const Query &row) {
    QJsonObject record{{"id"_L1, row.text(1)},         {"chat_id"_L1, row.text(2)},
                       {"sender_id"_L1, row.text(3)},  {"type"_L1, row.text(4)},
                       {"content"_L1, row.text(5)},    {"created_at"_L1, row.number(6)},
                       {"is_starred"_L1, row.flag(11)}};
    if (!row.isNull(7)) {
        record["edited"_L1] = true;
        record["edited_at"_L1] = row.number(7);
    }
    if (!row.isNull(8))
        record["reply_to"_L1] = row.text(8);
    if (!row.isNull(9))
        record["forwarded_from"_L1] = parsed(row.text(9));
    if (!row.isNull(10)) {
        record["zk_encrypted"_L1] = true;
        record["zk_payload"_L1] = parsed(row.text(10));
    }
    return record;
}

void noteMentions(Work &work, const QString &messageId, const NewMessage &message, qint64 sender) {
    static const QRegularExpression mention(u"@([^\\s@]{1,64})"_s);
    QSet<QString> names;
    auto found = mention.globalMatch(message.content);
    while (found.hasNext() && names.size() < 50) {
        QString name = nameKey(found.next().captured(1));
        names.insert(name);
        while (!name.isEmpty() && name.back().isPunct() && name.back() != u'_')
            name.chop(1);
        names.insert(name);
    }
    for (const QString &name : std::as_const(names))
        execute(
            work.database(),
            u"INSERT OR IGNORE INTO mentions(user_id, message_id) SELECT u.id, ? FROM users u "
            "JOIN members k ON k.user_id = u.id AND k.chat_id = ? WHERE u.username_key = ? AND u.id <> ?"_s,
            {messageId, message.chatId, name, sender});
}

} // namespace

QJsonObject postMessage(Work &work, const NewMessage &message, const Caller &sender) {
    const bool wanted =
        !QUuid::fromString(message.wantedId).isNull() && message.wantedId.size() == 36 &&
        !exists(work.database(), u"SELECT 1 FROM messages WHERE id = ?"_s, {message.wantedId});
    const QString id = wanted ? message.wantedId : newId();
    const Query inserted(
        work.database(),
        u"INSERT INTO messages(id, chat_id, sender_id, type, content, created_at, reply_to, forwarded_from, "
        "zk_payload) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"_s,
        {id, message.chatId, sender.userId, message.type, message.content, work.services.now(),
         nullable(message.replyTo), nullable(jsonText(message.forwardedFrom)),
         nullable(jsonText(message.zkPayload))});
    indexWords(work.database(), inserted.insertedId(), message.content);
    noteFiles(work.database(), id, message.content);
    noteMentions(work, id, message, sender.userId);
    const QJsonObject record =
        messageRecords(work.database(), sender.userId, u"m.id = ?"_s, {id}, {}).first().toObject();
    work.tell(members(work.database(), message.chatId),
              messageEvent("messenger_message"_L1, message.chatId, record), sender);
    work.afterwards([&robots = work.services.robots, record] { robots.notice(record); });
    return record;
}

Answer postOnce(Call &call, const std::function<NewMessage()> &message) {
    const auto recordOf = [&](const QString &id) {
        const QJsonArray found = messageRecords(call.database(), call.caller.userId, u"m.id = ?"_s, {id}, {});
        if (found.isEmpty())
            throw Refusal(410, "gone");
        return found.first().toObject();
    };
    return onceOnly(
        call, [&] { return postMessage(call, message(), call.caller); }, recordOf);
}

MessagePlace requireMessage(Database &database, const QString &messageId, qint64 userId) {
    Query row(database, u"SELECT seq, chat_id, sender_id FROM messages WHERE id = ?"_s, {messageId});
    if (!row.next())
        refuseNotFound();
    requireMember(database, row.text(1), userId);
    return {row.integer(0), row.text(1), row.integer(2)};
}

QJsonArray messagePage(Database &database, const QString &chatId, qint64 userId,
                       const std::optional<QString> &before, qint64 limit) {
    QString condition = u"m.chat_id = ?"_s;
    QVariantList values{chatId};
    if (before) {
        const MessagePlace place = requireMessage(database, *before, userId);
        if (place.chatId != chatId)
            refuseNotFound();
        condition += u" AND m.seq < ?"_s;
        values.append(place.seq);
    }
    const QJsonArray latestFirst =
        messageRecords(database, userId, condition, values, u"ORDER BY m.seq DESC LIMIT %1"_s.arg(limit));
    QJsonArray page;
    for (qsizetype i = latestFirst.size() - 1; i >= 0; --i)
        page.append(latestFirst.at(i));
    return page;
}

QJsonArray messageRecords(Database &database, qint64 userId, const QString &condition,
                          const QVariantList &values, const QString &tail) {
    Query rows(database, u"SELECT %1 FROM messages m WHERE %2 %3"_s.arg(recordColumns, condition, tail),
               QVariantList{userId} + values);
    QJsonArray records;
    while (rows.next()) {
        QJsonObject record = recordOf(rows);
        record["reactions"_L1] = reactionsOf(database, rows.text(1));
        records.append(record);
    }
    return records;
}

QJsonArray reactionsOf(Database &database, const QString &messageId) {
    QJsonArray reactions;
    Query rows(database, u"SELECT emoji, user_id FROM reactions WHERE message_id = ? ORDER BY rowid"_s,
               {messageId});
    while (rows.next())
        reactions.append(QJsonObject{{"emoji"_L1, rows.text(0)}, {"user_id"_L1, rows.text(1)}});
    return reactions;
}

} // namespace orvane::homeserver
