// SPDX-License-Identifier: MIT
#include "HomeServer/Local/SignalRelay.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"

#include <QJsonDocument>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype largestSignal = 64LL * 1024; // bytes

// To acquaintances, and in a chat to those who are in it with the sender.
Answer relay(Call &call) {
    const auto to = fields::userId(call.body.value("to"_L1));
    if (!to)
        refuseBadRequest();
    const qint64 self = call.caller.userId;
    if (QJsonDocument(call.body).toJson(QJsonDocument::Compact).size() > largestSignal)
        refuseBadRequest();
    if (const auto chat = fields::optionalText(call.body, "chat_id"_L1)) {
        requireMember(call.database(), *chat, self);
        requireMember(call.database(), *chat, *to);
    }
    if (*to != self && !acquaintances(call.database(), self).contains(*to))
        refuseForbidden();
    QJsonObject signal = call.body;
    signal.remove("to"_L1);
    signal.remove("user_id"_L1);
    signal["from"_L1] = QString::number(self);
    call.tell({*to}, signal, call.caller);
    return {};
}

} // namespace

void addSignals(Router &router) {
    for (const char *type : {"call_offer", "call_answer", "call_hangup", "ice_candidate", "p2p_signal"})
        router.addFrame(type, relay);
}

} // namespace orvane::homeserver
