// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Conversation/Chat/Conversation.h"

#include <QCoroTask>
#include <QSet>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// The pinned messages of an open chat. A pin changes at once, and changes back when the server refuses. Main
/// thread.
class MessagePins : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("An open chat has its pins.")
    /// The pinned among the messages, in their order.
    Q_PROPERTY(QList<orvane::MessengerMessage> pinnedMessages READ pinnedMessages NOTIFY pinnedChanged)

    /// Of this run only.
    OBSERVABLE(QSet<QString>, pinnedMessageIDs)

public:
    /// The conversation holds this.
    explicit MessagePins(Conversation &chat);

    QList<MessengerMessage> pinnedMessages() const;
    bool isPinned(const QString &messageID) const { return pinnedMessageIDs.value().contains(messageID); }
    Q_INVOKABLE void pinUnpin(const orvane::MessengerMessage &message);
    Q_INVOKABLE void scrollTo() const;
    /// The message where there is room for one line.
    Q_INVOKABLE QString lineOf(const orvane::MessengerMessage &message) {
        return m_chat.lineOf(message.content);
    }

Q_SIGNALS:
    void pinnedChanged();

private:
    static QCoro::Task<void> pinAtServer(std::shared_ptr<MessagePins> self, QString messageID, bool pin);

    void setPinned(const QString &messageID, bool pinned);

    Conversation &m_chat;
};

} // namespace orvane
