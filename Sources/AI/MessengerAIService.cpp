// SPDX-License-Identifier: MIT
#include "AI/MessengerAIService.h"

#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Base/Task.h"
#include "Server/HttpAnswer.h"

#include <QTextBoundaryFinder>

namespace orvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype messagesForReplies = 10;
constexpr qsizetype messagesForAnalysis = 20;
constexpr qsizetype messagesInDigest = 10;
constexpr qsizetype charactersInDigest = 50;
constexpr qsizetype mostReplies = 3;

using Messages = QList<MessengerMessage>;
using Items = QList<MessengerAPI::Texts>;

const auto user = u"user"_s;
const auto assistant = u"assistant"_s;

Messages lastOf(const Messages &messages, qsizetype count) {
    return messages.last(std::min(count, messages.size()));
}

Items itemsOf(const Messages &messages, const QString &myUserID, const QString &ownRole,
              const QString &othersRole) {
    Items items;
    for (const MessengerMessage &message : messages)
        items.append({{u"role"_s, message.senderID == myUserID ? ownRole : othersRole},
                      {u"content"_s, message.content}});
    return items;
}

Items itemsForReplies(const Messages &messages, const QString &myUserID) {
    return itemsOf(lastOf(messages, messagesForReplies), myUserID, assistant, user);
}

std::optional<QString> responseIn(const QByteArray &body) {
    const auto object = json::readObject(body);
    const auto response = object ? json::text(*object, u"response") : std::nullopt;
    return response ? std::optional(response->trimmed()) : std::nullopt;
}

QStringList fewRepliesIn(const QJsonObject &answer) {
    return json::texts(answer, u"replies").value_or(QStringList()).mid(0, mostReplies);
}

// Characters as people count them: an emoji with its modifiers is one.
QString firstCharacters(const QString &text, qsizetype count) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype end = 0;
    while (count-- > 0 && end >= 0 && end < text.size())
        end = finder.toNextBoundary();
    return end < 0 ? text : text.left(end);
}

QString digestOf(const Messages &messages, const QString &myUserID) {
    QStringList lines;
    for (const MessengerMessage &message : lastOf(messages, messagesInDigest))
        lines.append((message.senderID == myUserID ? u"Я: "_s : u"Собеседник: "_s) +
                     firstCharacters(message.content, charactersInDigest));
    return u"Последние сообщения: "_s + lines.join(u" · "_s);
}

} // namespace

PersonaReplies PersonaReplies::from(const QJsonObject &answer) {
    return {fewRepliesIn(answer), json::integer(answer, u"persona_samples").value_or(0)};
}

MessengerAIService::MessengerAIService(MessengerAPI &server, const QString &base, int timeoutMs)
    : api(base + u"/api/chat"_s)
    , m_server(server)
    , m_timeoutMs(timeoutMs) {}

MessengerAIService &MessengerAIService::shared() {
    static auto *service = new MessengerAIService;
    return *service;
}

QCoro::Task<std::optional<QString>> MessengerAIService::askAI(QString prompt) {
    QNetworkRequest request = httpRequest(QUrl(api, QUrl::StrictMode), m_timeoutMs);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    const QByteArray body = json::compact({{u"message"_s, prompt}, {u"temperature"_s, 0.3}});
    const HttpAnswer answer = co_await awaitAnswer(sharedNetwork().post(request, body));
    if (!answer.transportError.isNull())
        co_return std::nullopt;
    co_return responseIn(answer.body);
}

QCoro::Task<std::optional<QString>> MessengerAIService::translateText(QString text, QString to) {
    const QString language = to == u"ru" ? u"русский"_s : u"английский"_s;
    return askAI(u"Переведи на "_s + language + u". ТОЛЬКО перевод:\n"_s + text);
}

QCoro::Task<std::optional<ChatAnalysis>> MessengerAIService::analyzeChat(Messages messages,
                                                                         QString myUserID) {
    const Items items = itemsOf(lastOf(messages, messagesForAnalysis), myUserID, user, assistant);
    const std::optional<QJsonObject> answer =
        co_await dropped(m_server.smartReply(items, u"0"_s), "the chat is shown without an analysis");
    const auto replies = answer ? json::texts(*answer, u"replies") : std::nullopt;
    if (!replies)
        co_return std::nullopt;
    ChatAnalysis analysis;
    analysis.chatContext = digestOf(messages, myUserID);
    analysis.replies = *replies;
    co_return analysis;
}

QCoro::Task<QStringList> MessengerAIService::generateSmartReplies(Messages messages, QString myUserID) {
    const Items items = itemsForReplies(messages, myUserID);
    QStringList replies;
    try {
        const QJsonObject answer = co_await m_server.smartReply(items, myUserID);
        replies = fewRepliesIn(answer);
    } catch (const std::exception &error) {
        logLine(u"[SmartReply] API error: "_s + localizedDescription(error));
    }
    co_return replies;
}

QCoro::Task<PersonaReplies> MessengerAIService::generatePersonaReplies(Messages messages, QString chatId,
                                                                       QString myUserID) {
    const Items items = itemsForReplies(messages, myUserID);
    PersonaReplies found;
    if (items.isEmpty())
        co_return found;
    try {
        const QJsonObject answer = co_await m_server.personaReply(chatId, items);
        found = PersonaReplies::from(answer);
    } catch (const std::exception &error) {
        logLine(u"[Persona] API error: "_s + localizedDescription(error));
    }
    if (found.replies.isEmpty()) {
        found.samples = 0;
        found.replies = co_await generateSmartReplies(messages, myUserID);
    }
    co_return found;
}

} // namespace orvane
