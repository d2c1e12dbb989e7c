// SPDX-License-Identifier: MIT
#pragma once

#include "Model/MessengerMessage.h"
#include "Server/MessengerAPI.h"
#include "Session/OrvaneTalkEndpoint.h"

#include <QCoroTask>

#include <optional>

namespace orvane {

/// What the server makes of the latest messages of a chat.
struct ChatAnalysis {
    /// One line that quotes the last messages.
    QString chatContext;
    QStringList replies;
    /// Nobody finds them yet.
    QStringList unansweredQuestions;
};

/// Replies in the person's own style, and from how many of their messages that style was learnt.
struct PersonaReplies {
    QStringList replies;
    qint64 samples = 0;

    /// At most three replies; none where there is no list of texts.
    static PersonaReplies from(const QJsonObject &answer);
};

/// What the open chat asks of the server's AI. A chat works without AI, so no operation throws: a failure is
/// an absent or an empty result. Every call is one round trip; nothing is kept. The object outlives its
/// operations. Main thread.
class MessengerAIService {
public:
    explicit MessengerAIService(MessengerAPI &server = MessengerAPI::shared(),
                                const QString &base = OrvaneTalkEndpoint::baseURL(), int timeoutMs = 60'000);

    static MessengerAIService &shared();

    /// The whole URL of the endpoint that takes free-form prompts.
    const QString api;

    /// Goes out without the token. The answer has no white space at its ends; an answer of nothing else is
    /// empty and not absent.
    QCoro::Task<std::optional<QString>> askAI(QString prompt);

    /// Into Russian for "ru", into English for everything else.
    QCoro::Task<std::optional<QString>> translateText(QString text, QString to);

    /// From the last 20 messages. Here the person is the speaker, in the two operations below the one to be
    /// imitated: the roles are the other way round on purpose.
    QCoro::Task<std::optional<ChatAnalysis>> analyzeChat(QList<MessengerMessage> messages, QString myUserID);

    /// At most three, from the last 10 messages; the server is asked even when there are none.
    QCoro::Task<QStringList> generateSmartReplies(QList<MessengerMessage> messages, QString myUserID);

    /// At most three, from the last 10 messages. Smart replies with no samples where the server has none, and
    /// nothing at all without messages.
    QCoro::Task<PersonaReplies> generatePersonaReplies(QList<MessengerMessage> messages, QString chatId,
                                                       QString myUserID);

private:
    MessengerAPI &m_server;
    const int m_timeoutMs;
};

} // namespace orvane
