// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/PollVotes.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/Events.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Store/Query.h"

#include <QJsonDocument>

#include <algorithm>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostOptions = 100;

struct Poll {
    QString messageId;
    QStringList options;
    bool multipleChoice = false;
};

// A poll is what a message of type "poll" says in its content.
Poll requirePoll(Database &database, const QString &chatId, const QString &pollId) {
    Query row(database,
              u"SELECT id, content FROM messages WHERE chat_id = ? AND type = 'poll' AND json_valid(content) "
              "AND json_extract(content, '$.id') = ? ORDER BY seq LIMIT 1"_s,
              {chatId, pollId});
    if (!row.next())
        refuseNotFound();
    const QJsonObject content = QJsonDocument::fromJson(row.text(1).toUtf8()).object();
    Poll poll{row.text(0), {}, content["isMultipleChoice"_L1].toBool()};
    for (const QJsonValue option : content["options"_L1].toArray())
        if (poll.options.size() < mostOptions)
            poll.options.append(option["id"_L1].toString());
    return poll;
}

QJsonObject countsOf(Database &database, const Poll &poll) {
    QJsonObject counts;
    for (const QString &option : poll.options)
        counts[option] =
            integerOf(database, u"SELECT count(*) FROM poll_votes WHERE message_id = ? AND option_id = ?"_s,
                      {poll.messageId, option});
    return counts;
}

Answer vote(Call &call) {
    const QString chat = fields::text(call.body, "chat_id"_L1);
    const QString pollId = fields::text(call.body, "poll_id"_L1);
    const QString option = fields::text(call.body, "option_id"_L1);
    requireMember(call.database(), chat, call.caller.userId);
    const Poll poll = requirePoll(call.database(), chat, pollId);
    if (!poll.options.contains(option))
        refuseNotFound();
    if (!poll.multipleChoice)
        execute(call.database(), u"DELETE FROM poll_votes WHERE message_id = ? AND user_id = ?"_s,
                {poll.messageId, call.caller.userId});
    execute(
        call.database(),
        u"INSERT INTO poll_votes(message_id, option_id, user_id) VALUES (?, ?, ?) ON CONFLICT DO NOTHING"_s,
        {poll.messageId, option, call.caller.userId});
    QJsonObject event = chatEvent("poll_vote"_L1, chat);
    event["poll_id"_L1] = pollId;
    event["option_id"_L1] = option;
    event["voter_id"_L1] = QString::number(call.caller.userId);
    event["results"_L1] = countsOf(call.database(), poll);
    call.tell(members(call.database(), chat), event, call.caller);
    return {};
}

} // namespace

void addPollVotes(Router &router) {
    router.addFrame("poll_vote", vote);
}

} // namespace orvane::homeserver
