// SPDX-License-Identifier: MIT
#include "Conversation/Assistant/ChatAssistant.h"

#include "Base/DescribedError.h"
#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Base/Task.h"

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

} // namespace

void ChatAssistant::sendAgentMessage() {
    const QString request = aiRequest.value().trimmed();
    if (request.isEmpty())
        return;
    aiRequest = QString();
    isAILoading = true;
    launch(ask(m_chat.hold(this), request));
}

QCoro::Task<void> ChatAssistant::ask(Self self, QString request) {
    try {
        const QJsonObject answer = co_await self->m_chat.parts.api.aiAgentChat(request, self->m_chat.chatID(),
                                                                               self->m_chat.currentUserID);
        self->isAILoading = false;
        if (const auto reply = json::text(answer, u"reply"))
            self->aiResponse = reply;
        const QJsonObject action = json::object(answer, u"action").value_or(QJsonObject());
        if (const auto type = json::text(action, u"type"))
            self->handleAgentAction(*type, json::object(action, u"params").value_or(QJsonObject()));
    } catch (const std::exception &error) {
        self->isAILoading = false;
        self->aiResponse = u"[Error: %1]"_s.arg(localizedDescription(error));
    }
}

void ChatAssistant::summarizeAction(const QString &period) {
    isSummarizing = true;
    launch(summarize(m_chat.hold(this), period));
}

QCoro::Task<void> ChatAssistant::summarize(Self self, QString period) {
    const std::optional<QJsonObject> answer = co_await dropped(
        self->m_chat.parts.api.summarizeChat(self->m_chat.chatID(), period, self->m_chat.currentUserID),
        "the banner stays as it was");
    if (answer)
        self->chatSummary = joined(
            {json::text(*answer, u"summary").value_or(QString()), section(u"• "_s, *answer, u"key_points"),
             section(u"✓ "_s, *answer, u"decisions"), section(u"→ "_s, *answer, u"action_items")});
    self->isSummarizing = false;
}

void ChatAssistant::appendToResponse(const QString &addition) {
    aiResponse = aiResponse.value().value_or(QString()) + addition;
}

void ChatAssistant::analyzeChat() {
    launch(analyze(m_chat.hold(this)));
}

QCoro::Task<void> ChatAssistant::analyze(Self self) {
    MessengerAIService &ai = self->m_chat.parts.ai();
    const QList<MessengerMessage> before = self->m_chat.messages.records();
    const std::optional<ChatAnalysis> analysis = co_await ai.analyzeChat(before, self->m_chat.currentUserID);
    if (analysis) {
        self->chatContext = analysis->chatContext;
        self->unansweredQuestions = analysis->unansweredQuestions;
    }
    const QList<MessengerMessage> now = self->m_chat.messages.records();
    const PersonaReplies answer =
        co_await ai.generatePersonaReplies(now, self->m_chat.chatID(), self->m_chat.currentUserID);
    self->smartReplies = answer.replies;
    self->personaSamples = answer.samples;
}

void ChatAssistant::closeContext() {
    chatContext = std::nullopt;
    unansweredQuestions = QStringList();
}

void ChatAssistant::handleAgentAction(const QString &type, const QJsonObject &params) {
    const Self self = m_chat.hold(this);
    const auto param = [&](QStringView key, const QString &otherwise = {}) {
        return json::text(params, key).value_or(otherwise);
    };
    if (type == "search"_L1)
        launch(agentSearch(self, param(u"query")));
    else if (type == "translate"_L1)
        launch(agentTranslate(self, param(u"text"), param(u"to", u"ru"_s)));
    else if (type == "summarize"_L1)
        launch(agentSummarize(self, param(u"period", u"all"_s)));
}

QCoro::Task<void> ChatAssistant::agentSearch(Self self, QString query) {
    try {
        const QList<QJsonObject> hits = co_await self->m_chat.parts.api.semanticSearch(
            query, self->m_chat.currentUserID, self->m_chat.chatID());
        QStringList results;
        for (const QJsonObject &hit : hits) {
            if (const auto content = json::text(hit, u"content"))
                results.append(*content);
            else if (const auto text = json::text(hit, u"text"))
                results.append(*text);
        }
        self->agentResults = results;
        self->showSearchPanel = true;
    } catch (const std::exception &error) {
        logLine(u"[Agent Search] "_s + localizedDescription(error));
    }
}

QCoro::Task<void> ChatAssistant::agentTranslate(Self self, QString text, QString language) {
    const std::optional<QString> translated = co_await self->m_chat.parts.ai().translateText(text, language);
    self->appendToResponse(u"\n\nПеревод (%1): %2"_s.arg(language, translated.value_or(u"—"_s)));
}

QCoro::Task<void> ChatAssistant::agentSummarize(Self self, QString period) {
    self->isSummarizing = true;
    const std::optional<QJsonObject> answer = co_await dropped(
        self->m_chat.parts.api.summarizeChat(self->m_chat.chatID(), period, self->m_chat.currentUserID),
        "the agent's own words stand");
    if (answer) {
        const QString summary = joined(
            {json::text(*answer, u"summary").value_or(QString()), section(u"• "_s, *answer, u"key_points")});
        self->chatSummary = summary;
        self->appendToResponse(u"\n\n"_s + summary);
    }
    self->isSummarizing = false;
}

} // namespace orvane
