// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/InviteOperations.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Security/Tokens.h"
#include "HomeServer/Store/Query.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 mostHours = 24LL * 365;

Answer newInvite(Call &call) {
    const QString chat = call.part("chat");
    requireMember(call.database(), chat, call.caller.userId);
    const qint64 hours = fields::integer(call.body, "expires_hours"_L1);
    if (hours < 1 || hours > mostHours ||
        exists(call.database(), u"SELECT 1 FROM chats WHERE id = ? AND type = 'direct'"_s, {chat}))
        refuseBadRequest();
    const QString code = QString::fromLatin1(
        randomBytes(12).toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
    const double expires = call.services.now() + static_cast<double>(hours) * 3600;
    execute(call.database(),
            u"INSERT INTO invites(code, chat_id, created_by, expires_at) VALUES (?, ?, ?, ?)"_s,
            {code, chat, call.caller.userId, expires});
    return Answer({{"code"_L1, code},
                   {"url"_L1, call.services.httpBase() + u"/api/messenger/invites/"_s + code},
                   {"expires_at"_L1, expires}},
                  201);
}

Answer acceptInvite(Call &call) {
    Query row(call.database(), u"SELECT chat_id FROM invites WHERE code = ? AND expires_at > ?"_s,
              {call.part("code"), call.services.now()});
    if (!row.next())
        refuseNotFound();
    addMember(call, row.text(0), call.caller.userId);
    return Answer({{"chat"_L1, chatRecord(call.database(), row.text(0), call.caller.userId)}});
}

} // namespace

void addInvites(Router &router) {
    router.add("POST", "chats/{chat}/invite", newInvite);
    router.add("POST", "invites/{code}", acceptInvite);
}

} // namespace orvane::homeserver
