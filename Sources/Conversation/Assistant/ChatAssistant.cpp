// SPDX-License-Identifier: MIT
#include "Conversation/Assistant/ChatAssistant.h"

#include "Base/DescribedError.h"
#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Base/Task.h"
#include "Conversation/Screen/MessengerChatView.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString marked(const QString &mark, const QStringList &lines) {
    QStringList markedLines;
    for (const QString &line : lines)
        markedLines.append(mark + line);
    return markedLines.join(u'\n');
}

QString section(const QString &mark, const QJsonObject &answer, QStringView key) {
    return marked(mark, json::texts(answer, key).value_or(QStringList()));
}

QString joined(QStringList sections) {
    sections.removeAll(QString());
    return sections.join(u"\n\n"_s);
}

void appendToResponse(MessengerChatView &screen, const QString &addition) {
    screen.aiResponse = screen.aiResponse.value().value_or(QString()) + addition;
}

} // namespace

void ChatAssistant::sendAgentMessage() {
    const QString request = m_screen.aiRequest.value().trimmed();
    if (request.isEmpty())
        return;
    m_screen.aiRequest = QString();
    m_screen.isAILoading = true;
    launch(ask(m_screen.shared_from_this(), request));
}

QCoro::Task<void> ChatAssistant::ask(Screen screen, QString request) {
    try {
        const QJsonObject answer =
            co_await screen->parts().api.aiAgentChat(request, screen->chat.id, screen->currentUserID);
        screen->isAILoading = false;
        if (const auto reply = json::text(answer, u"reply"))
            screen->aiResponse = reply;
        const QJsonObject action = json::object(answer, u"action").value_or(QJsonObject());
        if (const auto type = json::text(action, u"type"))
            ChatAssistant(*screen).handleAgentAction(*type,
                                                     json::object(action, u"params").value_or(QJsonObject()));
    } catch (const std::exception &error) {
        screen->isAILoading = false;
        screen->aiResponse = u"[Error: %1]"_s.arg(localizedDescription(error));
    }
}

void ChatAssistant::summarizeAction(const QString &period) {
    m_screen.isSummarizing = true;
    launch(summarize(m_screen.shared_from_this(), period));
}

QCoro::Task<void> ChatAssistant::summarize(Screen screen, QString period) {
    const std::optional<QJsonObject> answer =
        co_await dropped(screen->parts().api.summarizeChat(screen->chat.id, period, screen->currentUserID),
                         "the banner stays as it was");
    if (answer)
        screen->chatSummary = joined(
            {json::text(*answer, u"summary").value_or(QString()), section(u"• "_s, *answer, u"key_points"),
             section(u"✓ "_s, *answer, u"decisions"), section(u"→ "_s, *answer, u"action_items")});
    screen->isSummarizing = false;
}

void ChatAssistant::analyzeChat() {
    launch(analyze(m_screen.shared_from_this()));
}

QCoro::Task<void> ChatAssistant::analyze(Screen screen) {
    MessengerAIService &ai = screen->parts().ai();
    const QList<MessengerMessage> before = screen->messages.records();
    const std::optional<ChatAnalysis> analysis = co_await ai.analyzeChat(before, screen->currentUserID);
    if (analysis) {
        screen->chatContext = analysis->chatContext;
        screen->unansweredQuestions = analysis->unansweredQuestions;
    }
    const QList<MessengerMessage> now = screen->messages.records();
    const PersonaReplies answer =
        co_await ai.generatePersonaReplies(now, screen->chat.id, screen->currentUserID);
    screen->smartReplies = answer.replies;
    screen->personaSamples = answer.samples;
}

void ChatAssistant::handleAgentAction(const QString &type, const QJsonObject &params) {
    const Screen screen = m_screen.shared_from_this();
    const auto param = [&](QStringView key, const QString &otherwise = {}) {
        return json::text(params, key).value_or(otherwise);
    };
    if (type == "search"_L1)
        launch(agentSearch(screen, param(u"query")));
    else if (type == "translate"_L1)
        launch(agentTranslate(screen, param(u"text"), param(u"to", u"ru"_s)));
    else if (type == "summarize"_L1)
        launch(agentSummarize(screen, param(u"period", u"all"_s)));
}

QCoro::Task<void> ChatAssistant::agentSearch(Screen screen, QString query) {
    try {
        const QList<QJsonObject> hits =
            co_await screen->parts().api.semanticSearch(query, screen->currentUserID, screen->chat.id);
        QStringList results;
        for (const QJsonObject &hit : hits) {
            if (const auto content = json::text(hit, u"content"))
                results.append(*content);
            else if (const auto text = json::text(hit, u"text"))
                results.append(*text);
        }
        screen->agentResults = results;
        screen->showSearchPanel = true;
    } catch (const std::exception &error) {
        logLine(u"[Agent Search] "_s + localizedDescription(error));
    }
}

QCoro::Task<void> ChatAssistant::agentTranslate(Screen screen, QString text, QString language) {
    const std::optional<QString> translated = co_await screen->parts().ai().translateText(text, language);
    appendToResponse(*screen, u"\n\nПеревод (%1): %2"_s.arg(language, translated.value_or(u"—"_s)));
}

QCoro::Task<void> ChatAssistant::agentSummarize(Screen screen, QString period) {
    screen->isSummarizing = true;
    const std::optional<QJsonObject> answer =
        co_await dropped(screen->parts().api.summarizeChat(screen->chat.id, period, screen->currentUserID),
                         "the agent's own words stand");
    if (answer) {
        const QString summary = joined(
            {json::text(*answer, u"summary").value_or(QString()), section(u"• "_s, *answer, u"key_points")});
        screen->chatSummary = summary;
        appendToResponse(*screen, u"\n\n"_s + summary);
    }
    screen->isSummarizing = false;
}

} // namespace orvane
