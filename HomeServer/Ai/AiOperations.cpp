// SPDX-License-Identifier: MIT
#include "HomeServer/Ai/AiOperations.h"

#include "HomeServer/Accounts/Visitors.h"
#include "HomeServer/Ai/Memory.h"
#include "HomeServer/Ai/ModelEndpoint.h"
#include "HomeServer/Ai/TextRules.h"
#include "HomeServer/Chats/ChatStore.h"
#include "HomeServer/Chats/MessageStore.h"
#include "HomeServer/Http/Fields.h"
#include "HomeServer/Operations/Router.h"
#include "HomeServer/Robots/Assistant.h"
#include "HomeServer/Security/Brakes.h"
#include "HomeServer/Store/Query.h"

#include <QRegularExpression>

#include <algorithm>

namespace orvane::homeserver {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostMessages = 100;
constexpr qsizetype longestPrompt = 64LL * 1024;
constexpr qsizetype shortReply = 80;

// What to ask the model, and what to make of its answer, which is null without a model.
struct Question {
    QList<ModelMessage> messages;
    std::function<Answer(Call &, const QString &said)> answer;
};

SlowOperation asking(Question (*prepare)(Call &)) {
    return [prepare](Call &call) {
        const Question question = prepare(call);
        return call.services.model.ask(question.messages)
            .then([answer = question.answer](const QString &said) -> Operation {
                return [answer, said](Call &later) { return answer(later, said); };
            });
    };
}

QString requireSaid(const QString &said) {
    if (said.isNull())
        throw Refusal(503, "ai_unavailable");
    return said.trimmed();
}

QStringList lines(const QString &text, qsizetype most) {
    static const QRegularExpression bullet(u"^[\\s\\-*•\\d.)]+"_s);
    QStringList result;
    for (QString line : text.split(u'\n'))
        if (const QString item = line.remove(bullet).trimmed(); !item.isEmpty() && result.size() < most)
            result.append(item);
    return result;
}

QList<ModelMessage> conversation(Call &call) {
    const QJsonValue list = call.body.value("messages"_L1);
    if (!list.isArray() || list.toArray().size() > mostMessages)
        refuseBadRequest();
    QList<ModelMessage> messages;
    for (const QJsonValue item : list.toArray()) {
        if (!item.isObject())
            refuseBadRequest();
        const QJsonObject object = item.toObject();
        const QString role = fields::text(object, "role"_L1);
        if (role != "user"_L1 && role != "assistant"_L1)
            refuseBadRequest();
        messages.append({role, fields::textOrEmpty(object, "content"_L1, fields::longText)});
    }
    return messages;
}

QString lastFromOthers(const QList<ModelMessage> &messages) {
    const auto last = std::find_if(messages.crbegin(), messages.crend(),
                                   [](const ModelMessage &message) { return message.role == "user"_L1; });
    return last == messages.crend() ? QString() : last->content;
}

ModelMessage system(const QString &text) {
    return {u"system"_s, text};
}

Answer replies(const QStringList &list, bool model) {
    return Answer(
        {{"replies"_L1, QJsonArray::fromStringList(list)}, {"method"_L1, model ? "model"_L1 : "rules"_L1}});
}

Question smartReply(Call &call) {
    const QList<ModelMessage> messages = conversation(call);
    // To nothing there is no reply, not even an empty list of them.
    if (messages.isEmpty())
        return {{}, [](Call &, const QString &) { return Answer(QJsonObject()); }};
    const QString last = lastFromOthers(messages);
    return {
        QList{system(
            u"Suggest three short replies of the assistant, one a line, in the language of the chat."_s)} +
            messages,
        [last](Call &, const QString &said) {
            return replies(said.isNull() ? shortReplies(last) : lines(said, 3), !said.isNull());
        }};
}

// The person's own short messages, the most frequent first: how they answer when they answer briefly.
QStringList ownShortTexts(Database &database, qint64 user) {
    QStringList texts;
    Query rows(database,
               u"SELECT content FROM messages WHERE sender_id = ? AND type = 'text' AND zk_payload IS NULL "
               "AND length(content) <= ? GROUP BY content ORDER BY count(*) DESC, max(seq) DESC LIMIT 30"_s,
               {user, static_cast<qint64>(shortReply)});
    while (rows.next())
        texts.append(rows.text(0));
    return texts;
}

Question personaReply(Call &call) {
    requireMember(call.database(), fields::text(call.body, "chat_id"_L1), call.caller.userId);
    const QList<ModelMessage> messages = conversation(call);
    const QStringList own = ownShortTexts(call.database(), call.caller.userId);
    const QString style =
        u"Suggest three short replies, one a line, in the manner of these:\n"_s + own.join(u'\n');
    return {QList{system(style)} + messages, [own](Call &later, const QString &said) {
                const qint64 samples =
                    integerOf(later.database(),
                              u"SELECT count(*) FROM messages WHERE sender_id = ? AND type = 'text'"_s,
                              {later.caller.userId});
                return Answer({{"replies"_L1,
                                QJsonArray::fromStringList(said.isNull() ? own.mid(0, 3) : lines(said, 3))},
                               {"persona_samples"_L1, samples},
                               {"method"_L1, said.isNull() ? "own-phrases"_L1 : "model"_L1}});
            }};
}

double secondsOf(const QString &period) {
    if (period == "hour"_L1)
        return 3600;
    if (period == "day"_L1 || period == "today"_L1 || period == "24h"_L1)
        return 24 * 3600.0;
    if (period == "week"_L1)
        return 7 * 24 * 3600.0;
    return 1e12; // everything
}

QList<Line> linesOf(Call &call, const QString &chat, double since) {
    QList<Line> result;
    Query rows(
        call.database(),
        u"SELECT name, content FROM (SELECT u.display_name AS name, substr(m.content, 1, 4000) AS content, "
        u"m.seq FROM messages m "
        "JOIN users u ON u.id = m.sender_id WHERE m.chat_id = ? AND m.created_at >= ? AND m.type = 'text' "
        "AND m.zk_payload IS NULL ORDER BY m.seq DESC LIMIT 200) ORDER BY seq"_s,
        {chat, since});
    while (rows.next())
        result.append({rows.text(0), rows.text(1)});
    return result;
}

QString transcript(const QList<Line> &list) {
    QStringList result;
    for (const Line &line : list)
        result.append(line.speaker + u": "_s + line.text);
    return result.join(u'\n').right(longestPrompt);
}

Question summarizeChat(Call &call) {
    const QString chat = fields::text(call.body, "chat_id"_L1);
    const QString period = fields::textOrEmpty(call.body, "period"_L1);
    requireMember(call.database(), chat, call.caller.userId);
    const QList<Line> said = linesOf(call, chat, call.services.now() - secondsOf(period));
    return {{system(u"Summarize this chat in its language in at most five sentences."_s),
             {u"user"_s, transcript(said)}},
            [said](Call &, const QString &modelText) {
                const Summary summary = summarize(said);
                return Answer({{"summary"_L1, modelText.isNull() ? summary.text : modelText.trimmed()},
                               {"key_points"_L1, QJsonArray::fromStringList(summary.keyPoints)},
                               {"decisions"_L1, QJsonArray::fromStringList(summary.decisions)},
                               {"action_items"_L1, QJsonArray::fromStringList(summary.tasks)},
                               {"method"_L1, modelText.isNull() ? "extractive"_L1 : "model"_L1}});
            }};
}

QJsonObject action(QLatin1StringView type, const QJsonObject &params) {
    return {{"type"_L1, type}, {"params"_L1, params}};
}

// A command at the beginning of a request to the agent, and what the client is to do for it.
std::optional<Answer> commandAnswer(const QString &message) {
    static const QRegularExpression search(u"^(/search|найди|find)\\s+(.+)$"_s,
                                           QRegularExpression::CaseInsensitiveOption |
                                               QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression translate(u"^(/translate|переведи)\\s+(.+)$"_s, search.patternOptions());
    static const QRegularExpression sum(u"^(/summar|summar|суммаризируй|кратко|подведи итог)"_s,
                                        QRegularExpression::CaseInsensitiveOption);
    const bool russian = looksRussian(message);
    if (const auto match = search.match(message); match.hasMatch())
        return Answer({{"reply"_L1, russian ? u"Ищу в этом чате."_s : u"Searching this chat."_s},
                       {"action"_L1, action("search"_L1, {{"query"_L1, match.captured(2)}})}});
    if (const auto match = translate.match(message); match.hasMatch())
        return Answer(
            {{"reply"_L1, russian ? u"Перевожу."_s : u"Translating."_s},
             {"action"_L1,
              action("translate"_L1, {{"text"_L1, match.captured(2)},
                                      {"to"_L1, looksRussian(match.captured(2)) ? "en"_L1 : "ru"_L1}})}});
    if (message.contains(sum))
        return Answer({{"reply"_L1, russian ? u"Коротко о чате:"_s : u"The chat in short:"_s},
                       {"action"_L1, action("summarize"_L1, {{"period"_L1, "all"_L1}})}});
    return std::nullopt;
}

Question agent(Call &call) {
    const QString message = fields::text(call.body, "message"_L1, longestPrompt);
    const QString chat = fields::text(call.body, "chat_id"_L1);
    requireMember(call.database(), chat, call.caller.userId);
    const QList<Line> said = linesOf(call, chat, 0);
    return {{system(u"You help with this chat:\n"_s + transcript(said)), {u"user"_s, message}},
            [message](Call &later, const QString &modelText) {
                if (const auto command = commandAnswer(message))
                    return *command;
                const bool model = !modelText.isNull();
                return Answer(
                    {{"reply"_L1, model ? modelText.trimmed()
                                        : assistantAnswer(later.database(), later.caller.userId, message)},
                     {"method"_L1, model ? "model"_L1 : "rules"_L1}});
            }};
}

QString languageName(const QString &code) {
    return code == "ru"_L1 ? u"Russian"_s : code == "en"_L1 ? u"English"_s : code;
}

Question translate(Call &call) {
    const QString id = call.part("message");
    requireMessage(call.database(), id, call.caller.userId);
    const QString language = languageName(fields::text(call.body, "target_lang"_L1, 16));
    Query row(call.database(), u"SELECT content FROM messages WHERE id = ?"_s, {id});
    row.next();
    return {{system(u"Translate into %1. Answer with the translation alone."_s.arg(language)),
             {u"user"_s, row.text(0)}},
            [](Call &, const QString &said) {
                return Answer({{"translated"_L1, requireSaid(said)}, {"method"_L1, "model"_L1}});
            }};
}

// Comes without a token, so it is for those who are at a member's address, and not without end.
Question freeForm(Call &call) {
    const double now = call.services.now();
    if (call.services.model.isThere() && !call.services.visitors.isMembersAddress(call.request.address, now))
        refuseForbidden();
    if (!call.services.brakes.freeQuestions.allows(sourceOf(call.request.address), now))
        throw Refusal(429, "too_many_requests");
    return {{{u"user"_s, fields::text(call.body, "message"_L1, longestPrompt)}},
            [](Call &, const QString &said) {
                return Answer({{"response"_L1, requireSaid(said)}});
            }};
}

// There are no rules by which sound turns into text.
Answer transcribe(Call &) {
    throw Refusal(503, "ai_unavailable");
}

} // namespace

void addAi(Router &router) {
    router.addSlow("POST", "/api/chat", asking(freeForm), Access::Open);
    router.addSlow("POST", "/api/chat/smart-reply", asking(smartReply));
    router.addSlow("POST", "/api/chat/persona-reply", asking(personaReply));
    router.addSlow("POST", "/api/chat/summarize", asking(summarizeChat));
    router.addSlow("POST", "/api/chat/agent", asking(agent));
    router.add("POST", "/api/chat/memory", askMemory);
    router.add("POST", "/api/chat/threads/discover", discoverThread);
    router.addSlow("POST", "messages/{message}/translate", asking(translate));
    router.addUpload("POST", "voice/transcribe", transcribe);
}

} // namespace orvane::homeserver
