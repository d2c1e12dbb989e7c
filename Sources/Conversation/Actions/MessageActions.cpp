// SPDX-License-Identifier: MIT
#include "Conversation/Actions/MessageActions.h"

#include "Base/DescribedError.h"
#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Base/Task.h"
#include "Conversation/Screen/MessengerChatView.h"

using namespace Qt::StringLiterals;

namespace orvane {

void MessageActions::copy(const MessengerMessage &message) {
    m_screen.parts().setPasteboard(m_screen.cipher().plainText(message.content));
}

void MessageActions::edit(const MessengerMessage &message) {
    m_screen.editingMessage = message;
    m_screen.editText = m_screen.cipher().plainText(message.content);
    m_screen.showEditAlert = true;
}

void MessageActions::saveEdit() {
    const QString text = m_screen.editText.value().trimmed();
    const std::optional<MessengerMessage> edited = m_screen.editingMessage;
    m_screen.showEditAlert = false;
    m_screen.editingMessage = std::nullopt;
    if (edited && !text.isEmpty())
        launch(performEdit(m_screen.shared_from_this(), edited->id, text));
}

QCoro::Task<void> MessageActions::performEdit(Screen screen, QString messageID, QString newContent) {
    try {
        co_await screen->parts().api.editMessage(messageID, screen->currentUserID, newContent);
        screen->change(messageID, [&](MessengerMessage &message) {
            message.content = newContent;
            message.editedAt = QDateTime::currentDateTimeUtc();
        });
    } catch (const std::exception &error) {
        logLine(u"[Edit] Failed: "_s + localizedDescription(error));
    }
}

void MessageActions::performDelete(const MessengerMessage &message) {
    launch(deleteAtServer(m_screen.shared_from_this(), message.id));
}

QCoro::Task<void> MessageActions::deleteAtServer(Screen screen, QString messageID) {
    try {
        co_await screen->parts().api.deleteMessage(messageID, screen->currentUserID);
        screen->removeAll(messageID);
    } catch (const std::exception &error) {
        logLine(u"[Delete] Failed: "_s + localizedDescription(error));
    }
}

void MessageActions::pinUnpin(const MessengerMessage &message) {
    const bool pin = !m_screen.isPinned(message.id);
    setPinned(message.id, pin);
    launch(pinAtServer(m_screen.shared_from_this(), message.id, pin));
}

void MessageActions::setPinned(const QString &messageID, bool pinned) {
    QSet<QString> ids = m_screen.pinnedMessageIDs;
    if (pinned)
        ids.insert(messageID);
    else
        ids.remove(messageID);
    m_screen.pinnedMessageIDs = ids;
}

QCoro::Task<void> MessageActions::pinAtServer(Screen screen, QString messageID, bool pin) {
    MessengerAPI &api = screen->parts().api;
    try {
        if (pin)
            co_await api.pinMessage(screen->chat.id, messageID);
        else
            co_await api.unpinMessage(screen->chat.id, messageID);
    } catch (const std::exception &error) {
        MessageActions(*screen).setPinned(messageID, !pin);
        logLine(u"[Pin] API error: "_s + localizedDescription(error));
    }
}

void MessageActions::toggleStar(const MessengerMessage &message) {
    const int row = m_screen.messages.rowOf(message.id);
    if (row < 0)
        return;
    const bool star = !m_screen.messages.at(row).isStarred;
    m_screen.changeAt(row, [&](MessengerMessage &record) { record.isStarred = star; });
    launch(starAtServer(m_screen.shared_from_this(), message.id, star));
}

QCoro::Task<void> MessageActions::starAtServer(Screen screen, QString messageID, bool star) {
    // The operation is told the state of before.
    const std::optional<bool> answer = co_await dropped(
        screen->parts().api.toggleStar(messageID, screen->currentUserID, !star), "the star itself tells");
    if (!answer)
        screen->change(messageID, [&](MessengerMessage &message) { message.isStarred = !star; });
}

void MessageActions::react(const MessengerMessage &message, const QString &emoji) {
    launch(reactAtServer(m_screen.shared_from_this(), message.id, emoji));
}

QCoro::Task<void> MessageActions::reactAtServer(Screen screen, QString messageID, QString emoji) {
    try {
        const QJsonObject answer = co_await screen->parts().api.addReaction(messageID, emoji);
        if (const auto reactions = json::list(answer, u"reactions"))
            screen->change(messageID, [&](MessengerMessage &message) {
                message.reactions = MessengerMessage::parseReactions(*reactions);
            });
    } catch (const std::exception &error) {
        logLine(u"[Reaction] failed: "_s + localizedDescription(error));
    }
}

void MessageActions::translate(const MessengerMessage &message) {
    if (m_screen.cipher().plainText(message.content).isEmpty() || m_screen.translatingMsgID.value())
        return;
    m_screen.translatingMsgID = message.id;
    launch(translateAtServer(m_screen.shared_from_this(), message.id));
}

QCoro::Task<void> MessageActions::translateAtServer(Screen screen, QString messageID) {
    const std::optional<QJsonObject> answer =
        co_await dropped(screen->parts().api.translateMessage(messageID, u"ru"_s),
                         "a message without a translation is shown as it is");
    if (const auto translated = answer ? json::text(*answer, u"translated") : std::nullopt) {
        QVariantMap texts = screen->translatedText;
        texts.insert(messageID, *translated);
        screen->translatedText = texts;
    }
    screen->translatingMsgID = std::nullopt;
}

} // namespace orvane
