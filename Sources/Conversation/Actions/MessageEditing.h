// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Conversation/Chat/Conversation.h"

#include <QCoroTask>
#include <QtQml/qqmlregistration.h>

namespace orvane {

/// The dialogs in which a person rewrites a message or deletes it. The list waits for the server; what fails
/// is logged, never shown. Main thread.
class MessageEditing : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("An open chat has its dialogs.")

    OBSERVABLE_OPTIONAL(MessengerMessage, editingMessage)
    OBSERVABLE(QString, editText)
    OBSERVABLE(bool, showEditAlert)
    /// Waits for the user's word.
    OBSERVABLE_OPTIONAL(MessengerMessage, deletingMessage)

public:
    /// The conversation holds this.
    explicit MessageEditing(Conversation &chat)
        : m_chat(chat) {}

    /// Opens the dialog with the message's text.
    void edit(const MessengerMessage &message);
    /// The same for the last text of the person at this window, if there is one.
    void editLastOwn();
    /// Closes the dialog; a text of nothing but white space changes nothing.
    Q_INVOKABLE void save();

    Q_INVOKABLE void keep() { deletingMessage = std::nullopt; }
    Q_INVOKABLE void performDelete();

private:
    using Chat = std::shared_ptr<Conversation>;

    static QCoro::Task<void> editAtServer(Chat chat, QString messageID, QString newContent);
    static QCoro::Task<void> deleteAtServer(Chat chat, QString messageID);

    Conversation &m_chat;
};

} // namespace orvane
