// SPDX-License-Identifier: MIT
#include "HomeServer/Chats/SearchOperations.h"

#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/Search.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestQuery = 1000;

Answer globalSearch(Call &call) {
    const QString query = call.queryText("q");
    if (query.isEmpty() || query.size() > longestQuery)
        refuseBadRequest();
    return Answer({{"messages"_L1, searchMessages(call.database(), call.caller.userId, query, {})}});
}

Answer semanticSearch(Call &call) {
    const QString query = fields::text(call.body, "query"_L1, longestQuery);
    const QString chat = fields::textOrEmpty(call.body, "chat_id"_L1);
    if (!chat.isEmpty())
        requireMember(call.database(), chat, call.caller.userId);
    return Answer({{"results"_L1, searchMessages(call.database(), call.caller.userId, query,
                                                 {.chatId = chat, .words = Words::Any, .limit = 20})},
                   {"method"_L1, "full-text"_L1}});
}

} // namespace

void addSearch(Router &router) {
    router.add("GET", "search/global", globalSearch);
    router.add("POST", "search/semantic", semanticSearch);
}

} // namespace orvane::homeserver
