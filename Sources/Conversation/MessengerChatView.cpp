#include "Conversation/MessengerChatView.h"

#include "Base/FreshId.h"
#include "Base/Json.h"
#include "Base/Task.h"
#include "Base/Times.h"
#include "Server/ApiError.h"
#include "Session/UserIdText.h"

#include <algorithm>

namespace orvane {

namespace {

// Nobody listens to more of one message in a list.
constexpr int spokenLength = 2000;

} // namespace

MessengerChatView::MessengerChatView(const MessengerChat &openChat, const Contacts &knownContacts,
                                     const QString &userID, MessengerAPI &api, MessengerWebSocket &socket)
    : chat(openChat)
    , contacts(knownContacts)
    , currentUserID(userID)
    , m_api(api)
    , m_socket(socket) {}

QString MessengerChatView::title() const {
    return chat.displayName(currentUserID, contacts);
}

void MessengerChatView::loadMessages() {
    isLoading = true;
    launch(loadHistory(shared_from_this()));
    QObject::connect(&m_socket, &MessengerWebSocket::events, this, &MessengerChatView::handleEvent);
}

void MessengerChatView::sendMessage() {
    const QString text = inputText;
    if (text.trimmed().isEmpty())
        return;
    inputText = QString();
    MessengerMessage message;
    message.id = freshId();
    message.chatID = chat.id;
    message.senderID = currentUserID;
    message.content = text;
    message.timestamp = QDateTime::currentDateTime();
    message.deliveryStatus = DeliveryStatus::sending;
    messages.append(message);
    launch(send(shared_from_this(), message));
}

QString MessengerChatView::senderName(const QString &userID) const {
    const auto sender = contacts.constFind(userID);
    return sender == contacts.constEnd() ? QStringLiteral("Someone") : sender->displayName;
}

MessagePlacement MessengerChatView::placement(int row) const {
    return MessagePlacement::of(messages.records(), row);
}

QString MessengerChatView::spokenMessage(const MessengerMessage &message) const {
    const bool own = message.senderID == currentUserID;
    const QString state = own ? rawText(message.deliveryStatus) : QStringLiteral("received");
    return QStringLiteral("%1, %2, %3, %4")
        .arg(own ? QStringLiteral("You") : senderName(message.senderID), message.content.left(spokenLength),
             message.timestamp.toLocalTime().toString(QStringLiteral("HH:mm")), state);
}

QCoro::Task<void> MessengerChatView::loadHistory(Self self) {
    try {
        const QList<QJsonObject> records =
            co_await self->m_api.fetchMessages(self->chat.id, std::nullopt, pageSize);
        self->showHistory(records);
        self->sendReadReceipt();
    } catch (const std::exception &) {
        // Dropped on purpose: the screen is never empty for want of a server.
        self->showSampleConversation();
    }
    self->isLoading = false;
}

QCoro::Task<void> MessengerChatView::send(Self self, MessengerMessage message) {
    const QJsonObject body{{QStringLiteral("user_id"), parseUserId(self->currentUserID).value_or(0)},
                           {QStringLiteral("content"), message.content},
                           {QStringLiteral("type"), rawText(message.type)}};
    const HttpTransport::Headers headers{{QStringLiteral("Idempotency-Key"), message.id}};
    const QString path = QStringLiteral("/api/messenger/chats/%1/messages").arg(self->chat.id);
    DeliveryStatus status = DeliveryStatus::sent;
    try {
        const QByteArray answer = co_await self->m_api.post(path, body, headers);
        const auto object = json::parseObject(answer);
        if (!object || !json::object(*object, u"message"))
            throw ApiError::api(500, QStringLiteral("Invalid response"));
    } catch (const std::exception &) {
        status = DeliveryStatus::failed;
    }
    self->setDeliveryStatus(message.id, status);
}

void MessengerChatView::showHistory(const QList<QJsonObject> &records) {
    QList<MessengerMessage> history;
    history.reserve(records.size());
    for (const QJsonObject &raw : records) {
        if (auto message = MessengerMessage::fromHistory(chat.id, raw))
            history.append(std::move(*message));
    }
    std::stable_sort(
        history.begin(), history.end(),
        [](const MessengerMessage &a, const MessengerMessage &b) { return a.timestamp < b.timestamp; });
    messages.assign(history);
}

void MessengerChatView::showSampleConversation() {
    const QString peer = chat.peerId(currentUserID);
    const QDateTime now = QDateTime::currentDateTime();
    const auto sample = [&](const QString &sender, const QString &text, qint64 age) {
        MessengerMessage message;
        message.id = freshId();
        message.chatID = chat.id;
        message.senderID = sender;
        message.content = text;
        message.timestamp = now.addSecs(-age);
        message.deliveryStatus = DeliveryStatus::sent;
        return message;
    };
    messages.assign({sample(peer, QStringLiteral("Hey! How is the project?"), 3600),
                     sample(currentUserID, QStringLiteral("Almost done!"), 3500),
                     sample(peer, QStringLiteral("Meeting tomorrow at 11."), 1800)});
}

void MessengerChatView::sendReadReceipt() {
    const auto &records = messages.records();
    const auto last =
        std::find_if(records.crbegin(), records.crend(),
                     [this](const MessengerMessage &message) { return message.senderID != currentUserID; });
    if (last == records.crend())
        return;
    m_socket.send({{QStringLiteral("type"), QStringLiteral("read_receipt")},
                   {QStringLiteral("chat_id"), chat.id},
                   {QStringLiteral("message_id"), last->id}});
}

void MessengerChatView::handleEvent(const WSEvent &event) {
    if (event.type != QLatin1String("messenger_message") || json::text(event.data, u"chat_id") != chat.id)
        return;
    if (const auto raw = json::object(event.data, u"message"))
        handleNewMessage(*raw);
}

void MessengerChatView::handleNewMessage(const QJsonObject &raw) {
    const auto id = json::text(raw, u"id");
    const auto senderID = json::text(raw, u"sender_id");
    const auto content = json::text(raw, u"content");
    if (!id || !senderID || !content)
        return;
    const auto createdAt = json::number(raw, u"created_at");
    MessengerMessage message;
    message.id = *id;
    message.chatID = chat.id;
    message.senderID = *senderID;
    message.type = MessengerMessage::typeOf(raw);
    message.content = *content;
    message.timestamp = createdAt ? times::fromUnixSeconds(*createdAt) : QDateTime::currentDateTime();
    message.deliveryStatus = DeliveryStatus::sent;
    messages.append(message);
}

void MessengerChatView::setDeliveryStatus(const QString &messageID, DeliveryStatus status) {
    const int row = messages.rowOf(messageID);
    if (row < 0)
        return;
    MessengerMessage message = messages.at(row);
    message.deliveryStatus = status;
    messages.replace(row, message);
}

} // namespace orvane
