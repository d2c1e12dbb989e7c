// SPDX-License-Identifier: MIT
#pragma once

#include <QCoroTask>

#include <QJsonObject>
#include <QString>

#include <memory>

namespace orvane {

class MessengerChatView;

/// What artificial intelligence adds to an open chat: the agent in its panel, the summary, the context of the
/// conversation and the offered replies. Main thread.
class ChatAssistant {
public:
    explicit ChatAssistant(MessengerChatView &screen)
        : m_screen(screen) {}

    /// Sends `aiRequest` to the agent; its answer may carry an action for this screen.
    void sendAgentMessage();
    void summarizeAction(const QString &period);
    /// Context and questions of the messages as they are now, then replies.
    void analyzeChat();
    /// An unknown type is ignored.
    void handleAgentAction(const QString &type, const QJsonObject &params);

private:
    using Screen = std::shared_ptr<MessengerChatView>;

    static QCoro::Task<void> ask(Screen screen, QString request);
    static QCoro::Task<void> summarize(Screen screen, QString period);
    static QCoro::Task<void> analyze(Screen screen);
    static QCoro::Task<void> agentSearch(Screen screen, QString query);
    static QCoro::Task<void> agentTranslate(Screen screen, QString text, QString language);
    static QCoro::Task<void> agentSummarize(Screen screen, QString period);

    MessengerChatView &m_screen;
};

} // namespace orvane
