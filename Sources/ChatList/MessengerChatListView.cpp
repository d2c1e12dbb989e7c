#include "ChatList/MessengerChatListView.h"

#include "Base/FreshId.h"
#include "Base/Json.h"
#include "Base/Task.h"
#include "ChatList/ChatOrder.h"
#include "Model/MessengerMock.h"

#include <algorithm>

namespace orvane {

namespace {

// More than fits into the widest row, and little enough to lay out at once.
constexpr int previewLength = 200;

MessengerUser contactOf(const QJsonObject &record, const QString &id) {
    MessengerUser user;
    user.id = id;
    user.username = json::text(record, u"username");
    user.displayName = json::text(record, u"display_name").value_or(user.username.value_or(QString()));
    user.status =
        json::text(record, u"status") == QLatin1String("online") ? UserStatus::online : UserStatus::offline;
    return user;
}

} // namespace

MessengerChatListView::MessengerChatListView(MessengerSession &session, MessengerAPI &api,
                                             MessengerWebSocket &socket)
    : m_session(session)
    , m_api(api)
    , m_socket(socket)
    , m_selection(selectedChatID.addNotifier([this] { openSelectedChat(); })) {}

void MessengerChatListView::loadData() {
    if (m_session.token)
        m_socket.connect(*m_session.token);
    QObject::disconnect(wsObserver);
    wsObserver =
        QObject::connect(&m_socket, &MessengerWebSocket::events, this, &MessengerChatListView::handleEvent);
    launch(registerDevice(shared_from_this()));
    launch(syncDevice(shared_from_this()));
    launch(loadContactsAndChats(shared_from_this()));
}

QString MessengerChatListView::displayName(const MessengerChat &chat) const {
    return chat.displayName(m_session.userIdText(), contacts);
}

QString MessengerChatListView::peerId(const MessengerChat &chat) const {
    return chat.type == ChatType::direct ? chat.peerId(m_session.userIdText()) : QString();
}

bool MessengerChatListView::isOnline(const QString &userID) const {
    const auto user = contacts.constFind(userID);
    return user != contacts.constEnd() && user->status == UserStatus::online;
}

QString MessengerChatListView::preview(const MessengerChat &chat) const {
    return chat.lastMessage ? chat.lastMessage->content.left(previewLength).simplified() : QString();
}

QString MessengerChatListView::spokenChat(const MessengerChat &chat) const {
    QStringList words{displayName(chat)};
    if (chat.lastMessage)
        words << preview(chat);
    if (chat.unreadCount > 0)
        words << QStringLiteral("%1 unread").arg(chat.unreadCount);
    return words.join(QStringLiteral(", "));
}

QCoro::Task<void> MessengerChatListView::registerDevice(Self self) {
    try {
        co_await self->m_api.registerDevice();
    } catch (const std::exception &) {
        // Dropped on purpose: the next start registers again.
    }
}

QCoro::Task<void> MessengerChatListView::syncDevice(Self self) {
    try {
        const QJsonObject sync = co_await self->m_api.pullDeviceSync();
        if (const auto cursor = json::integer(sync, u"cursor"))
            self->m_session.adoptSyncCursor(*cursor);
        const QByteArray answer = co_await self->m_api.get(QStringLiteral("/api/messenger/federation/info"));
        const auto federation = json::parseObject(answer);
        if (const auto matrixId = federation ? json::text(*federation, u"matrix_id") : std::nullopt)
            self->m_session.matrixId = matrixId;
    } catch (const std::exception &) {
        // Dropped on purpose: the cursor stays where it was.
    }
}

QCoro::Task<void> MessengerChatListView::loadContactsAndChats(Self self) {
    QList<QJsonObject> people;
    try {
        people = co_await self->m_api.fetchContacts(self->m_session.userIdText());
    } catch (const std::exception &) {
        // Dropped on purpose: without contacts the chats are still worth showing.
    }
    QList<MessengerChat> loaded;
    try {
        loaded = co_await self->m_api.fetchChats();
    } catch (const std::exception &) {
        // Dropped on purpose: the sample chats stand in below.
    }
    self->showContacts(people);
    self->showChats(std::move(loaded));
    self->isLoading = false;
}

void MessengerChatListView::showContacts(const QList<QJsonObject> &records) {
    MessengerUser me = MessengerMock::currentUser();
    me.id = m_session.userIdText();
    const MessengerUser &assistant = MessengerMock::aiAssistant();
    contacts = {{me.id, me}, {assistant.id, assistant}};
    for (const QJsonObject &record : records) {
        if (const auto id = json::text(record, u"id"))
            contacts.insert(*id, contactOf(record, *id));
    }
    contactsRevision = contactsRevision + 1;
}

void MessengerChatListView::showChats(QList<MessengerChat> loaded) {
    if (loaded.isEmpty()) {
        loaded = MessengerMock::sampleChats();
        for (MessengerChat &chat : loaded)
            chat.participants.removeIf([this](const QString &id) { return !contacts.contains(id); });
    }
    std::stable_sort(loaded.begin(), loaded.end(), standsBefore);
    chats.assign(loaded);
    openSelectedChat();
}

void MessengerChatListView::handleEvent(const WSEvent &event) {
    if (event.type == QLatin1String("messenger_message"))
        handleNewMessage(event.data);
    else if (event.type == QLatin1String("user_status"))
        handleUserStatus(event.data);
}

void MessengerChatListView::handleNewMessage(const QJsonObject &event) {
    const auto chatID = json::text(event, u"chat_id");
    const auto raw = json::object(event, u"message");
    const auto content = raw ? json::text(*raw, u"content") : std::nullopt;
    const auto senderID = raw ? json::text(*raw, u"sender_id") : std::nullopt;
    if (!chatID || !raw || !content || !senderID)
        return;
    const int row = chats.rowOf(*chatID);
    if (row < 0)
        return;
    MessengerMessage last;
    last.id = json::text(*raw, u"id").value_or(freshId());
    last.chatID = *chatID;
    last.senderID = *senderID;
    last.content = *content;
    last.timestamp = QDateTime::currentDateTime();
    last.deliveryStatus = DeliveryStatus::sent;

    MessengerChat chat = chats.at(row);
    chat.lastMessage = last;
    if (selectedChatID.value() != *chatID)
        chat.unreadCount += 1;
    chats.replace(row, chat);
    chats.move(row, rowFor(chat, chats.records()));
}

void MessengerChatListView::handleUserStatus(const QJsonObject &event) {
    const auto userID = json::text(event, u"user_id");
    const auto status = json::text(event, u"status");
    if (!userID || !status || !contacts.contains(*userID))
        return;
    contacts[*userID].status = *status == QLatin1String("online") ? UserStatus::online : UserStatus::offline;
    contactsRevision = contactsRevision + 1;
}

void MessengerChatListView::openSelectedChat() {
    const int row = chats.rowOf(selectedChatID);
    const QString openID = m_openChat ? m_openChat->chat.id : QString();
    if (row >= 0 && openID == selectedChatID.value())
        return;
    // The screen that closes may still be drawn, and its tasks may still be running.
    const std::shared_ptr<MessengerChatView> closing = std::move(m_openChat);
    if (row >= 0) {
        m_openChat = std::shared_ptr<MessengerChatView>(
            new MessengerChatView(chats.at(row), contacts, m_session.userIdText(), m_api, m_socket),
            [](MessengerChatView *screen) { screen->deleteLater(); });
        m_openChat->loadMessages();
    }
    if (closing || m_openChat)
        Q_EMIT openChatChanged();
}

} // namespace orvane
