// SPDX-License-Identifier: MIT
#include "HomeServer/Extensions/BotOperations.h"

#include "HomeServer/Accounts/Users.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Extensions/Slug.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Store/Query.h"

#include <QJsonDocument>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr auto echoWebhook = "builtin://echo"_L1;
constexpr qsizetype longestData = 64LL * 1024;

struct Bot {
    qint64 id = 0;
    qint64 owner = 0;
    QString webhook;
    QString webApp;
    bool open = false;
};

Bot requireBot(Call &call, const QString &id) {
    Query row(call.database(),
              u"SELECT user_id, owner_id, webhook_url, web_app_url, is_public FROM bots WHERE user_id = ?"_s,
              {id.toLongLong()});
    if (!row.next())
        refuseNotFound();
    Bot bot{row.integer(0), row.integer(1), row.text(2), row.text(3), row.flag(4)};
    if (!bot.open && bot.owner != call.caller.userId)
        refuseForbidden();
    return bot;
}

QJsonArray botRecords(Database &database, const QString &condition, qint64 value) {
    QJsonArray bots;
    Query rows(
        database,
        u"SELECT b.user_id, u.display_name, u.username, b.description, b.web_app_url, b.is_public "
        "FROM bots b JOIN users u ON u.id = b.user_id WHERE %1 = ? ORDER BY b.user_id"_s.arg(condition),
        {value});
    while (rows.next())
        bots.append(QJsonObject{{"id"_L1, rows.text(0)},
                                {"name"_L1, rows.text(1)},
                                {"username"_L1, rows.text(2)},
                                {"description"_L1, rows.text(3)},
                                {"web_app_url"_L1, rows.text(4)},
                                {"is_public"_L1, rows.flag(5)}});
    return bots;
}

Answer ownBots(Call &call) {
    return Answer({{"bots"_L1, botRecords(call.database(), u"b.owner_id"_s, call.caller.userId)}});
}

Answer publicBots(Call &call) {
    return Answer({{"bots"_L1, botRecords(call.database(), u"b.is_public"_s, 1)}});
}

QString webhookAddress(Call &call) {
    const bool builtIn = call.body.value("webhook_url"_L1) == echoWebhook;
    return builtIn ? QString(echoWebhook) : fields::webAddress(call.body, "webhook_url"_L1);
}

QString freeUsername(Database &database, const QString &name) {
    const QString base = u"bot_"_s + slugOf(name, u"helper"_s);
    QString username = base;
    for (int number = 2; userNamed(database, username); ++number)
        username = base + u'_' + QString::number(number);
    return username;
}

Answer newBot(Call &call) {
    const QString name = fields::text(call.body, "name"_L1, 64);
    const QString webhook = webhookAddress(call);
    const QString webApp = fields::webAddress(call.body, "web_app_url"_L1);
    const qint64 id =
        createUser(call, {.username = freeUsername(call.database(), name), .displayName = name, .bot = true});
    execute(call.database(),
            u"INSERT INTO bots(user_id, owner_id, description, webhook_url, web_app_url, is_public) "
            "VALUES (?, ?, ?, ?, ?, ?)"_s,
            {id, call.caller.userId, fields::textOrEmpty(call.body, "description"_L1, 4000), webhook, webApp,
             fields::flag(call.body, "is_public"_L1, false)});
    return Answer({{"bot"_L1, botRecords(call.database(), u"b.user_id"_s, id).first()}}, 201);
}

Answer openChat(Call &call) {
    const Bot bot = requireBot(call, call.part("bot"));
    return Answer({{"chat_id"_L1, directChat(call, call.caller.userId, bot.id)}});
}

Answer stats(Call &call) {
    const Bot bot = requireBot(call, call.part("bot"));
    const QString kind = bot.webhook.isEmpty()                   ? u"none"_s
                         : bot.webhook.startsWith("builtin:"_L1) ? u"builtin"_s
                                                                 : u"http"_s;
    return Answer(
        {{"messages_sent"_L1,
          integerOf(call.database(), u"SELECT count(*) FROM messages WHERE sender_id = ?"_s, {bot.id})},
         {"chats"_L1,
          integerOf(call.database(), u"SELECT count(*) FROM members WHERE user_id = ?"_s, {bot.id})},
         {"has_mini_app"_L1, !bot.webApp.isEmpty()},
         {"webhook_type"_L1, kind}});
}

Answer miniAppInit(Call &call) {
    const QString chat = call.queryText("chat_id");
    const Bot bot = requireBot(call, call.part("bot"));
    requireMember(call.database(), chat, call.caller.userId);
    if (bot.webApp.isEmpty())
        refuseNotFound();
    return Answer({{"web_app_url"_L1, bot.webApp},
                   {"bot_id"_L1, QString::number(bot.id)},
                   {"chat_id"_L1, chat},
                   {"user_id"_L1, QString::number(call.caller.userId)},
                   {"display_name"_L1, displayName(call.database(), call.caller.userId)}});
}

Answer miniAppData(Call &call) {
    const Bot bot = requireBot(call, fields::text(call.body, "bot_id"_L1));
    const QString chat = fields::text(call.body, "chat_id"_L1);
    const QByteArray data =
        QJsonDocument(fields::object(call.body, "data"_L1)).toJson(QJsonDocument::Compact);
    requireMember(call.database(), chat, call.caller.userId);
    if (data.size() > longestData)
        refuseBadRequest();
    execute(call.database(),
            u"INSERT INTO mini_app_data(bot_id, chat_id, user_id, data, created_at) VALUES (?, ?, ?, ?, ?)"_s,
            {bot.id, chat, call.caller.userId, QString::fromUtf8(data), call.services.now()});
    return Answer({{"status"_L1, "stored"_L1}});
}

} // namespace

void addBots(Router &router) {
    router.add("GET", "bots", ownBots);
    router.add("GET", "bots/discover", publicBots);
    router.add("POST", "bots", newBot);
    router.add("POST", "bots/{bot}/chat", openChat);
    router.add("GET", "bots/{bot}/stats", stats);
    router.add("GET", "bots/{bot}/webapp-init", miniAppInit);
    router.add("POST", "miniapp/submit", miniAppData);
}

} // namespace orvane::homeserver
