// SPDX-License-Identifier: MIT
#include "Conversation/Receiving/HistoryLoader.h"

#include "Base/FreshId.h"
#include "Base/Task.h"
#include "Conversation/Screen/MessengerChatView.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QList<MessengerMessage> sampleConversation(const MessengerChatView &screen) {
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const auto sample = [&](const QString &sender, const QString &text, qint64 age) {
        MessengerMessage message;
        message.id = freshId();
        message.chatID = screen.chat.id;
        message.senderID = sender;
        message.content = text;
        message.timestamp = now.addSecs(-age);
        message.deliveryStatus = DeliveryStatus::sent;
        return message;
    };
    return {sample(screen.peerId(), u"Hey! How is the project?"_s, 3600),
            sample(screen.currentUserID, u"Almost done!"_s, 3500),
            sample(screen.peerId(), u"Meeting tomorrow at 11."_s, 1800)};
}

void sendReadReceipt(MessengerChatView &screen) {
    const auto &records = screen.messages.records();
    const auto last =
        std::find_if(records.crbegin(), records.crend(), [&screen](const MessengerMessage &message) {
            return message.senderID != screen.currentUserID;
        });
    if (last == records.crend())
        return;
    screen.parts().socket.send(
        {{u"type"_s, u"read_receipt"_s}, {u"chat_id"_s, screen.chat.id}, {u"message_id"_s, last->id}});
}

} // namespace

void HistoryLoader::load() {
    m_screen.isLoading = true;
    launch(show(m_screen.shared_from_this()));
}

QCoro::Task<void> HistoryLoader::show(Screen screen) {
    const std::optional<QList<MessengerMessage>> history =
        co_await dropped(fetch(screen), "the screen is never empty for want of a server");
    if (history) {
        screen->messages.assign(*history);
        sendReadReceipt(*screen);
    } else {
        screen->messages.assign(sampleConversation(*screen));
    }
    screen->isLoading = false;
}

QCoro::Task<QList<MessengerMessage>> HistoryLoader::fetch(Screen screen) {
    const QList<QJsonObject> records =
        co_await screen->parts().api.fetchMessages(screen->chat.id, std::nullopt, pageSize);
    QList<MessengerMessage> history;
    history.reserve(records.size());
    for (const QJsonObject &raw : records) {
        std::optional<MessengerMessage> message = MessengerMessage::fromHistory(screen->chat.id, raw);
        if (!message)
            continue;
        const QString text = co_await screen->cipher().historyContent(raw, message->content);
        message->content = text;
        history.append(std::move(*message));
    }
    std::stable_sort(
        history.begin(), history.end(),
        [](const MessengerMessage &a, const MessengerMessage &b) { return a.timestamp < b.timestamp; });
    co_return history;
}

} // namespace orvane
