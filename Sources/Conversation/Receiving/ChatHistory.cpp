// SPDX-License-Identifier: MIT
#include "Conversation/Receiving/ChatHistory.h"

#include "Base/FreshId.h"
#include "Base/Task.h"
#include "Server/EventNames.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QList<MessengerMessage> sampleConversation(const Conversation &chat) {
    const QDateTime now = QDateTime::currentDateTimeUtc();
    const auto sample = [&](const QString &sender, const QString &text, qint64 age) {
        MessengerMessage message;
        message.id = freshId();
        message.chatID = chat.chatID();
        message.senderID = sender;
        message.content = text;
        message.timestamp = now.addSecs(-age);
        message.deliveryStatus = DeliveryStatus::sent;
        return message;
    };
    return {sample(chat.peerId(), u"Hey! How is the project?"_s, 3600),
            sample(chat.currentUserID, u"Almost done!"_s, 3500),
            sample(chat.peerId(), u"Meeting tomorrow at 11."_s, 1800)};
}

void sendReadReceipt(const Conversation &chat) {
    const QList<MessengerMessage> &records = chat.messages.records();
    const auto last = std::find_if(records.crbegin(), records.crend(),
                                   [&](const MessengerMessage &message) { return !chat.isOwn(message); });
    if (last == records.crend())
        return;
    chat.parts.socket.send({{u"type"_s, eventname::sendReadReceipt},
                            {u"chat_id"_s, chat.chatID()},
                            {u"message_id"_s, last->id}});
}

QCoro::Task<QList<MessengerMessage>> fetch(std::shared_ptr<Conversation> chat) {
    const QList<QJsonObject> records =
        co_await chat->parts.api.fetchMessages(chat->chatID(), std::nullopt, historyPageSize);
    QList<MessengerMessage> history;
    history.reserve(records.size());
    for (const QJsonObject &raw : records) {
        std::optional<MessengerMessage> message = MessengerMessage::fromHistory(chat->chatID(), raw);
        if (!message)
            continue;
        const QString text = co_await chat->cipher.historyContent(raw, message->content);
        message->content = text;
        history.append(std::move(*message));
    }
    std::stable_sort(
        history.begin(), history.end(),
        [](const MessengerMessage &a, const MessengerMessage &b) { return a.timestamp < b.timestamp; });
    co_return history;
}

} // namespace

QCoro::Task<void> loadHistory(std::shared_ptr<Conversation> chat) {
    const std::optional<QList<MessengerMessage>> history =
        co_await dropped(fetch(chat), "the screen is never empty for want of a server");
    if (history) {
        chat->messages.assign(*history);
        sendReadReceipt(*chat);
    } else {
        chat->messages.assign(sampleConversation(*chat));
    }
}

} // namespace orvane
