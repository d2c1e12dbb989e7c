// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/MessageOperations.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/Events.h"
#include "HomeServer/Chats/MessageStore.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Store/Query.h"

#include <algorithm>
#include <array>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 defaultPage = 50;
constexpr qint64 longestPage = 200;

constexpr std::array messageTypes = {"text"_L1,      "image"_L1,      "voice"_L1,    "video"_L1,
                                     "file"_L1,      "sticker"_L1,    "location"_L1, "system"_L1,
                                     "aiRequest"_L1, "aiResponse"_L1, "poll"_L1};

qint64 pageLimit(const Call &call) {
    const QString text = call.queryText("limit");
    if (text.isEmpty())
        return defaultPage;
    bool decimal = false;
    const qint64 limit = text.toLongLong(&decimal);
    if (!decimal || limit < 1)
        refuseBadRequest();
    return std::min(limit, longestPage);
}

Answer listMessages(Call &call) {
    const QString chat = call.part("chat");
    requireMember(call.database(), chat, call.caller.userId);
    std::optional<QString> before;
    if (call.request.query.hasQueryItem(u"before"_s))
        before = call.queryText("before");
    return Answer(
        {{"messages"_L1, messagePage(call.database(), chat, call.caller.userId, before, pageLimit(call))}});
}

// A channel is read by all of its members and written by whoever runs it.
void requireVoice(Call &call, const QString &chat) {
    requireMember(call.database(), chat, call.caller.userId);
    if (exists(call.database(), u"SELECT 1 FROM chats WHERE id = ? AND type = 'channel'"_s, {chat}))
        requireOwner(call.database(), chat, call.caller.userId);
}

NewMessage readMessage(Call &call) {
    NewMessage message;
    message.wantedId = QString::fromLatin1(call.request.idempotencyKey);
    message.chatId = call.part("chat");
    message.type = fields::optionalText(call.body, "type"_L1).value_or(u"text"_s);
    if (std::ranges::find(messageTypes, message.type) == messageTypes.end())
        refuseBadRequest();
    message.content = fields::text(call.body, "content"_L1, fields::longText);
    message.replyTo = fields::optionalText(call.body, "reply_to"_L1);
    message.forwardedFrom = fields::optionalObject(call.body, "forwarded_from"_L1);
    message.zkPayload = fields::optionalObject(call.body, "zk_payload"_L1);
    return message;
}

Answer newMessage(Call &call) {
    requireVoice(call, call.part("chat"));
    return postOnce(call, [&] { return readMessage(call); });
}

Answer readReceipt(Call &call) {
    const qint64 reader = call.caller.userId;
    const QString messageId = fields::text(call.body, "message_id"_L1);
    const MessagePlace place = requireMessage(call.database(), messageId, reader);
    const int moved =
        execute(call.database(),
                u"UPDATE members SET read_seq = ?1 WHERE chat_id = ?2 AND user_id = ?3 AND read_seq < ?1"_s,
                {place.seq, place.chatId, reader});
    if (moved == 0)
        return {};
    QJsonObject event = chatEvent("messenger_read_receipt"_L1, place.chatId);
    event["message_id"_L1] = messageId;
    event["user_id"_L1] = QString::number(reader);
    QList<qint64> others = members(call.database(), place.chatId);
    others.removeOne(reader);
    call.tell(others, event);
    return {};
}

} // namespace

void addMessages(Router &router) {
    router.add("GET", "chats/{chat}/messages", listMessages);
    router.add("POST", "chats/{chat}/messages", newMessage);
    router.addFrame("read_receipt", readReceipt);
}

} // namespace orvane::homeserver
