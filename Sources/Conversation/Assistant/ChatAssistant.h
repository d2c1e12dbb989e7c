// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Conversation/Chat/Conversation.h"

#include <QCoroTask>
#include <QJsonObject>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// What artificial intelligence adds to an open chat: the agent in its panel, the summary, the context of the
/// conversation and the offered replies. Main thread.
class ChatAssistant : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("An open chat has its assistant.")

    OBSERVABLE(bool, showAIPanel)
    OBSERVABLE(QString, aiRequest)
    OBSERVABLE_OPTIONAL(QString, aiResponse)
    OBSERVABLE(bool, isAILoading)
    OBSERVABLE(QStringList, smartReplies)
    /// The messages of the own style that the replies were modelled on.
    OBSERVABLE(qint64, personaSamples)
    OBSERVABLE_OPTIONAL(QString, chatSummary)
    OBSERVABLE(bool, isSummarizing)
    OBSERVABLE_OPTIONAL(QString, chatContext)
    OBSERVABLE(QStringList, unansweredQuestions)
    OBSERVABLE(bool, showSearchPanel)
    OBSERVABLE(QStringList, agentResults)

public:
    /// The conversation holds this.
    explicit ChatAssistant(Conversation &chat)
        : m_chat(chat) {}

    /// Sends `aiRequest` to the agent; its answer may carry an action for this screen.
    Q_INVOKABLE void sendAgentMessage();
    Q_INVOKABLE void summarizeAction(const QString &period);
    Q_INVOKABLE void closeSummary() { chatSummary = std::nullopt; }
    /// Context and questions of the messages as they are now, then replies.
    void analyzeChat();
    Q_INVOKABLE void closeContext();
    /// An unknown type is ignored.
    void handleAgentAction(const QString &type, const QJsonObject &params);

private:
    using Self = std::shared_ptr<ChatAssistant>;

    static QCoro::Task<void> ask(Self self, QString request);
    static QCoro::Task<void> summarize(Self self, QString period);
    static QCoro::Task<void> analyze(Self self);
    static QCoro::Task<void> agentSearch(Self self, QString query);
    static QCoro::Task<void> agentTranslate(Self self, QString text, QString language);
    static QCoro::Task<void> agentSummarize(Self self, QString period);

    void appendToResponse(const QString &addition);

    Conversation &m_chat;
};

} // namespace orvane
