// SPDX-License-Identifier: MIT
#include "Conversation/Actions/MessageEditing.h"

#include "Base/DescribedError.h"
#include "Base/LogLine.h"
#include "Base/Task.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

void MessageEditing::edit(const MessengerMessage &message) {
    editingMessage = message;
    editText = m_chat.cipher.plainText(message.content);
    showEditAlert = true;
}

void MessageEditing::editLastOwn() {
    const QList<MessengerMessage> &records = m_chat.messages.records();
    const auto last =
        std::find_if(records.crbegin(), records.crend(), [this](const MessengerMessage &message) {
            return m_chat.isOwn(message) && message.type == MessageType::text;
        });
    if (last != records.crend())
        edit(*last);
}

void MessageEditing::save() {
    const QString text = editText.value().trimmed();
    const std::optional<MessengerMessage> edited = editingMessage;
    showEditAlert = false;
    editingMessage = std::nullopt;
    if (edited && !text.isEmpty())
        launch(editAtServer(m_chat.shared_from_this(), edited->id, text));
}

QCoro::Task<void> MessageEditing::editAtServer(Chat chat, QString messageID, QString newContent) {
    try {
        co_await chat->parts.api.editMessage(messageID, chat->currentUserID, newContent);
        chat->messages.change(messageID, [&](MessengerMessage &message) {
            message.content = newContent;
            message.editedAt = QDateTime::currentDateTimeUtc();
        });
    } catch (const std::exception &error) {
        logLine(u"[Edit] Failed: "_s + localizedDescription(error));
    }
}

void MessageEditing::performDelete() {
    if (const auto &message = deletingMessage.value())
        launch(deleteAtServer(m_chat.shared_from_this(), message->id));
    deletingMessage = std::nullopt;
}

QCoro::Task<void> MessageEditing::deleteAtServer(Chat chat, QString messageID) {
    try {
        co_await chat->parts.api.deleteMessage(messageID, chat->currentUserID);
        chat->messages.removeAll(messageID);
    } catch (const std::exception &error) {
        logLine(u"[Delete] Failed: "_s + localizedDescription(error));
    }
}

} // namespace orvane
