// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/MessageActions.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/Events.h"
#include "HomeServer/Chats/MessageStore.h"
#include "HomeServer/Files/LostFiles.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Store/Commits.h"
#include "HomeServer/Store/Query.h"
#include "HomeServer/Store/Words.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestEmoji = 32;
constexpr int longestList = 500;

MessagePlace requireOwnMessage(Call &call) {
    const MessagePlace place = requireMessage(call.database(), call.part("message"), call.caller.userId);
    if (place.senderId != call.caller.userId)
        refuseForbidden();
    return place;
}

void tellMembers(Call &call, const QString &chatId, const QJsonObject &event) {
    call.tell(members(call.database(), chatId), event, call.caller);
}

Answer edit(Call &call) {
    const MessagePlace place = requireOwnMessage(call);
    const QString content = fields::text(call.body, "content"_L1, fields::longText);
    execute(call.database(), u"UPDATE messages SET content = ?, edited_at = ? WHERE seq = ?"_s,
            {content, call.services.now(), place.seq});
    indexWords(call.database(), place.seq, content);
    noteFiles(call.database(), call.part("message"), content);
    dropLostFiles(call);
    call.services.commits.scrubLog();
    const QJsonObject record =
        messageRecords(call.database(), call.caller.userId, u"m.seq = ?"_s, {place.seq}, {})
            .first()
            .toObject();
    tellMembers(call, place.chatId, messageEvent("messenger_message_edited"_L1, place.chatId, record));
    return Answer({{"message"_L1, record}});
}

Answer remove(Call &call) {
    const MessagePlace place = requireOwnMessage(call);
    const bool files = namesFiles(call.database(), call.part("message"));
    execute(call.database(), u"DELETE FROM messages WHERE seq = ?"_s, {place.seq});
    if (files)
        dropLostFiles(call);
    call.services.commits.scrubLog();
    QJsonObject event = chatEvent("messenger_message_deleted"_L1, place.chatId);
    event["message_id"_L1] = call.part("message");
    tellMembers(call, place.chatId, event);
    return Answer({{"status"_L1, "deleted"_L1}});
}

// A second time takes the same reaction back.
Answer react(Call &call) {
    const QString message = call.part("message");
    const MessagePlace place = requireMessage(call.database(), message, call.caller.userId);
    const QString emoji = fields::text(call.body, "emoji"_L1, longestEmoji);
    const int taken = execute(call.database(),
                              u"DELETE FROM reactions WHERE message_id = ? AND user_id = ? AND emoji = ?"_s,
                              {message, call.caller.userId, emoji});
    if (taken == 0)
        execute(call.database(),
                u"INSERT INTO reactions(message_id, user_id, emoji, created_at) VALUES (?, ?, ?, ?)"_s,
                {message, call.caller.userId, emoji, call.services.now()});
    const QJsonArray reactions = reactionsOf(call.database(), message);
    QJsonObject event = chatEvent("messenger_reaction"_L1, place.chatId);
    event["message_id"_L1] = message;
    event["reactions"_L1] = reactions;
    tellMembers(call, place.chatId, event);
    return Answer({{"reactions"_L1, reactions}});
}

QString requireMessageOfChat(Call &call) {
    const QString message = fields::text(call.body, "message_id"_L1);
    requireMember(call.database(), call.part("chat"), call.caller.userId);
    if (requireMessage(call.database(), message, call.caller.userId).chatId != call.part("chat"))
        refuseNotFound();
    return message;
}

Answer pin(Call &call) {
    execute(call.database(),
            u"INSERT INTO pins(chat_id, message_id, created_at) VALUES (?, ?, ?) ON CONFLICT DO NOTHING"_s,
            {call.part("chat"), requireMessageOfChat(call), call.services.now()});
    return Answer({{"status"_L1, "pinned"_L1}});
}

Answer unpin(Call &call) {
    execute(call.database(), u"DELETE FROM pins WHERE chat_id = ? AND message_id = ?"_s,
            {call.part("chat"), requireMessageOfChat(call)});
    return Answer({{"status"_L1, "unpinned"_L1}});
}

Answer star(Call &call) {
    requireMessage(call.database(), call.part("message"), call.caller.userId);
    execute(call.database(),
            u"INSERT INTO stars(user_id, message_id, created_at) VALUES (?, ?, ?) ON CONFLICT DO NOTHING"_s,
            {call.caller.userId, call.part("message"), call.services.now()});
    return Answer({{"status"_L1, "starred"_L1}});
}

Answer unstar(Call &call) {
    requireMessage(call.database(), call.part("message"), call.caller.userId);
    execute(call.database(), u"DELETE FROM stars WHERE user_id = ? AND message_id = ?"_s,
            {call.caller.userId, call.part("message")});
    return Answer({{"status"_L1, "unstarred"_L1}});
}

// The messages that a table of (user_id, message_id) names, in chats the user is still in.
QJsonArray noted(Call &call, QLatin1StringView table) {
    return messageRecords(call.database(), call.caller.userId,
                          u"m.id IN (SELECT message_id FROM %1 WHERE user_id = ?) "
                          "AND m.chat_id IN (SELECT chat_id FROM members WHERE user_id = ?)"_s.arg(table),
                          {call.caller.userId, call.caller.userId},
                          u"ORDER BY m.seq DESC LIMIT %1"_s.arg(longestList));
}

Answer starred(Call &call) {
    return Answer({{"messages"_L1, noted(call, "stars"_L1)}});
}

Answer mentions(Call &call) {
    return Answer({{"mentions"_L1, noted(call, "mentions"_L1)}});
}

} // namespace

void addMessageActions(Router &router) {
    router.add("PATCH", "messages/{message}", edit);
    router.add("DELETE", "messages/{message}", remove);
    router.add("POST", "messages/{message}/reactions", react);
    router.add("POST", "messages/{message}/star", star);
    router.add("DELETE", "messages/{message}/star", unstar);
    router.add("POST", "chats/{chat}/messages/pin", pin);
    router.add("POST", "chats/{chat}/messages/unpin", unpin);
    router.add("GET", "starred", starred);
    router.add("GET", "mentions", mentions);
}

} // namespace orvane::homeserver
