// SPDX-License-Identifier: MIT
#include "Conversation/Actions/MessageActions.h"

#include "Base/DescribedError.h"
#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Base/Task.h"

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

using Chat = std::shared_ptr<Conversation>;

QCoro::Task<void> starAtServer(Chat chat, QString messageID, bool star) {
    // The operation is told the state of before.
    const std::optional<bool> answer = co_await dropped(
        chat->parts.api.toggleStar(messageID, chat->currentUserID, !star), "the star itself tells");
    if (!answer)
        chat->messages.change(messageID, [&](MessengerMessage &message) { message.isStarred = !star; });
}

QCoro::Task<void> reactAtServer(Chat chat, QString messageID, QString emoji) {
    try {
        const QJsonObject answer = co_await chat->parts.api.addReaction(messageID, emoji);
        if (const auto reactions = json::list(answer, u"reactions"))
            chat->messages.change(messageID, [&](MessengerMessage &message) {
                message.reactions = MessengerMessage::parseReactions(*reactions);
            });
    } catch (const std::exception &error) {
        logLine(u"[Reaction] failed: "_s + localizedDescription(error));
    }
}

} // namespace

void copyMessage(Conversation &chat, const MessengerMessage &message) {
    chat.parts.setPasteboard(chat.cipher.plainText(message.content));
}

void toggleStar(Conversation &chat, const MessengerMessage &message) {
    const int row = chat.messages.rowOf(message.id);
    if (row < 0)
        return;
    const bool star = !chat.messages.at(row).isStarred;
    chat.messages.changeAt(row, [&](MessengerMessage &record) { record.isStarred = star; });
    launch(starAtServer(chat.shared_from_this(), message.id, star));
}

void reactToMessage(Conversation &chat, const MessengerMessage &message, const QString &emoji) {
    launch(reactAtServer(chat.shared_from_this(), message.id, emoji));
}

} // namespace orvane
