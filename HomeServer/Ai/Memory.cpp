// SPDX-License-Identifier: MIT
#include "HomeServer/Ai/Memory.h"

#include "HomeServer/Ai/TextRules.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/Search.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Store/Query.h"

#include <QDateTime>

#include <algorithm>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestQuery = 1000;
constexpr qsizetype timelineLength = 5;

QString senderName(Database &database, const QJsonValue &message) {
    Query row(database, u"SELECT display_name FROM users WHERE id = ?"_s,
              {message["sender_id"_L1].toString().toLongLong()});
    return row.next() ? row.text(0) : QString();
}

QList<Line> linesOf(Database &database, const QJsonArray &messages) {
    QList<Line> lines;
    for (const QJsonValue message : messages)
        lines.append({senderName(database, message), message["content"_L1].toString()});
    return lines;
}

QString joined(const QList<Line> &lines) {
    QStringList texts;
    for (const Line &line : lines)
        texts.append(line.text);
    return texts.join(u'\n');
}

// Day and text of the finds, in the order in which they were said.
QJsonArray timelineOf(const QJsonArray &messages) {
    QList<QJsonObject> ordered;
    for (qsizetype i = 0; i < std::min(messages.size(), timelineLength); ++i)
        ordered.append(messages.at(i).toObject());
    std::ranges::sort(ordered, {},
                      [](const QJsonObject &message) { return message["created_at"_L1].toDouble(); });
    QJsonArray timeline;
    for (const QJsonObject &message : std::as_const(ordered)) {
        const auto day = QDateTime::fromSecsSinceEpoch(message["created_at"_L1].toInteger(), Qt::UTC).date();
        timeline.append(u"%1 · %2"_s.arg(day.toString(Qt::ISODate),
                                         message["content"_L1].toString().simplified().left(100)));
    }
    return timeline;
}

QJsonArray entityRecords(const QString &text) {
    QJsonArray records;
    for (const Entity &entity : entitiesIn(text))
        records.append(QJsonObject{{"type"_L1, entity.type}, {"name"_L1, entity.name}});
    return records;
}

QString nothingFound(const QString &query) {
    return looksRussian(query) ? u"Ничего не найдено."_s : u"Nothing was found."_s;
}

} // namespace

Answer askMemory(Call &call) {
    const QString query = fields::text(call.body, "query"_L1, longestQuery);
    const QString chat = fields::textOrEmpty(call.body, "chat_id"_L1);
    if (!chat.isEmpty())
        requireMember(call.database(), chat, call.caller.userId);
    const QJsonArray found = searchMessages(call.database(), call.caller.userId, query,
                                            {.chatId = chat, .words = Words::Any, .limit = 10});
    const QList<Line> lines = linesOf(call.database(), found);
    return Answer({{"answer"_L1, found.isEmpty() ? nothingFound(query) : summarize(lines.mid(0, 3)).text},
                   {"method"_L1, "full-text"_L1},
                   {"entities"_L1, entityRecords(joined(lines))},
                   {"timeline"_L1, timelineOf(found)},
                   {"sources"_L1, found}});
}

Answer discoverThread(Call &call) {
    const QString query = fields::text(call.body, "query"_L1, longestQuery);
    const QJsonArray found =
        searchMessages(call.database(), call.caller.userId, query, {.words = Words::Any, .limit = 30});
    QStringList chats;
    for (const QJsonValue message : found)
        chats.append(message["chat_title"_L1].toString());
    chats.removeDuplicates();
    chats.removeAll(QString());
    return Answer({{"title"_L1, query.simplified()},
                   {"summary"_L1, summarize(linesOf(call.database(), found)).text},
                   {"related_chats"_L1, QJsonArray::fromStringList(chats)},
                   {"messages"_L1, found},
                   {"method"_L1, "full-text"_L1}});
}

} // namespace orvane::homeserver
