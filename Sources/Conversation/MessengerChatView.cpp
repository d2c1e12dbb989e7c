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
                                     const QString &userID, MessengerAPI &api, MessengerWebSocket &socket,
                                     const EndToEnd *encryption)
    : chat(openChat)
    , contacts(knownContacts)
    , currentUserID(userID)
    , m_api(api)
    , m_socket(socket)
    , m_cipher(chat, api, encryption)
    , m_encryption(encryption) {}

QString MessengerChatView::title() const {
    return chat.displayName(currentUserID, contacts);
}

QString MessengerChatView::fingerprint() const {
    return m_encryption ? m_encryption->crypto().fingerprint.value() : QString();
}

void MessengerChatView::loadMessages() {
    isLoading = true;
    launch(establishSession(shared_from_this()));
    launch(loadHistory(shared_from_this()));
    QObject::connect(&m_socket, &MessengerWebSocket::events, this, &MessengerChatView::handleEvent);
}

void MessengerChatView::sendMessage() {
    const QString text = inputText;
    if (text.trimmed().isEmpty())
        return;
    inputText = QString();
    launch(send(shared_from_this(), text));
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
        QList<MessengerMessage> history;
        history.reserve(records.size());
        for (const QJsonObject &raw : records) {
            std::optional<MessengerMessage> message = MessengerMessage::fromHistory(self->chat.id, raw);
            if (!message)
                continue;
            const QString text = co_await self->m_cipher.historyContent(raw, message->content);
            message->content = text;
            history.append(std::move(*message));
        }
        self->showHistory(std::move(history));
        self->sendReadReceipt();
    } catch (const std::exception &) {
        // Dropped on purpose: the screen is never empty for want of a server.
        self->showSampleConversation();
    }
    self->isLoading = false;
}

QCoro::Task<void> MessengerChatView::establishSession(Self self) {
    co_await self->m_cipher.establishSession(self->peerId());
}

QCoro::Task<void> MessengerChatView::send(Self self, QString text) {
    const OutboundContent content = co_await self->m_cipher.prepareOutboundContent(text);
    MessengerMessage message;
    message.id = freshId();
    message.chatID = self->chat.id;
    message.senderID = self->currentUserID;
    message.content = content.displayContent;
    message.timestamp = QDateTime::currentDateTimeUtc();
    message.deliveryStatus = DeliveryStatus::sending;
    self->messages.append(message);
    QJsonObject body{{QStringLiteral("user_id"), parseUserId(self->currentUserID).value_or(0)},
                     {QStringLiteral("content"), content.serverContent},
                     {QStringLiteral("type"), rawText(message.type)}};
    if (content.zkPayload)
        body.insert(QStringLiteral("zk_payload"), *content.zkPayload);
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

void MessengerChatView::showHistory(QList<MessengerMessage> history) {
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
        launch(receive(shared_from_this(), *raw));
}

QCoro::Task<void> MessengerChatView::receive(Self self, QJsonObject raw) {
    const auto id = json::text(raw, u"id");
    const auto senderID = json::text(raw, u"sender_id");
    const auto content = json::text(raw, u"content");
    if (!id || !senderID || !content)
        co_return;
    const auto createdAt = json::number(raw, u"created_at");
    MessengerMessage message;
    message.id = *id;
    message.chatID = self->chat.id;
    message.senderID = *senderID;
    message.type = MessengerMessage::typeOf(raw);
    const QString text = co_await self->m_cipher.liveContent(raw, *content);
    message.content = text;
    message.timestamp = createdAt ? times::fromUnixSeconds(*createdAt) : QDateTime::currentDateTimeUtc();
    message.deliveryStatus = DeliveryStatus::sent;
    self->messages.append(message);
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
