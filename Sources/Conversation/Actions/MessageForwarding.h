// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Conversation/Chat/Conversation.h"

#include <QCoroTask>
#include <QJsonObject>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// Sends a message of the open chat on to another one, which a person picks. Main thread.
class MessageForwarding : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("An open chat has its picker.")

    OBSERVABLE(bool, showForwardPicker)
    OBSERVABLE_OPTIONAL(MessengerMessage, messageToForward)
    OBSERVABLE(QList<orvane::MessengerChat>, availableChats)

public:
    /// The conversation holds this.
    explicit MessageForwarding(Conversation &chat)
        : m_chat(chat) {}

    /// The chats that can be forwarded to; the sample chats where the server's can't be had.
    void loadAvailableChats();
    /// Opens the picker.
    void pick(const MessengerMessage &message);
    /// Closes the picker; without a picked message nothing is sent.
    Q_INVOKABLE void forwardTo(const orvane::MessengerChat &target);

    Q_INVOKABLE QString nameOf(const orvane::MessengerChat &target) const;
    Q_INVOKABLE QString hueIdOf(const orvane::MessengerChat &target) const;

private:
    static QCoro::Task<void> fetchChats(std::shared_ptr<MessageForwarding> self);
    static QCoro::Task<void> post(std::shared_ptr<Conversation> chat, QString chatID, QJsonObject body);

    Conversation &m_chat;
};

} // namespace orvane
