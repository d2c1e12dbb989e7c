// SPDX-License-Identifier: MIT
#include "ChatList/Screen/MessengerChatListView.h"

#include "Base/Json.h"
#include "Base/MakeScreen.h"
#include "Base/NotificationCentre.h"
#include "Base/Task.h"
#include "ChatList/Organising/ChatAnswer.h"
#include "Model/MessengerMock.h"
#include "Platform/UserNotifications.h"
#include "Server/EventNames.h"

#include <QJSEngine>

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr qint64 highestBadge = 99;
constexpr auto nobodyKnows = "nobody knows of any";

/// QML would otherwise delete what a call gives it.
template <typename Screen>
Screen *keptHere(const std::shared_ptr<Screen> &screen) {
    QJSEngine::setObjectOwnership(screen.get(), QJSEngine::CppOwnership);
    return screen.get();
}

} // namespace

MessengerChatListView::MessengerChatListView(const Parts &parts)
    : chats(parts.session, contacts)
    , m_parts(parts)
    , m_search(makeScreen<MessageSearch>(parts.session, parts.api, contacts))
    , m_newGroup(makeScreen<NewGroup>(parts.session, parts.api, parts.encryption))
    , m_channels(makeScreen<Channels>(parts.session, parts.api))
    , m_folders(makeScreen<Folders>(parts.api))
    , m_selection(selectedChatID.addNotifier([this] { openSelectedChat(); }))
    , m_searchText(searchText.addNotifier([this] {
        filterChats();
        m_search->searchMessages(searchText);
    })) {
    connect(m_folders.get(), &Folders::activeChanged, this, &MessengerChatListView::filterChats);
    connect(m_newGroup.get(), &NewGroup::created, this, &MessengerChatListView::openNewChat);
    observeNotifications();
}

void MessengerChatListView::appear() {
    loadData();
    launch(loadStarredCount(shared_from_this()));
    launch(loadMentionsCount(shared_from_this()));
    m_channels->loadChannels();
    m_folders->loadFolders();
}

void MessengerChatListView::loadData() {
    if (m_parts.session.token)
        m_parts.socket.connect(*m_parts.session.token);
    observeWSEvents();
    launch(dropped(m_parts.api.registerDevice(), "the next start registers again"));
    launch(dropped(syncDevice(shared_from_this()), "the cursor stays where it was"));
    launch(loadContactsAndChats(shared_from_this()));
}

void MessengerChatListView::observeWSEvents() {
    disconnect(wsObserver);
    wsObserver =
        connect(&m_parts.socket, &MessengerWebSocket::events, this, &MessengerChatListView::handleEvent);
}

void MessengerChatListView::observeNotifications() {
    connect(&NotificationCentre::shared(), &NotificationCentre::posted, this,
            [this](const QString &name, const QJsonObject &userInfo) {
                if (name != orvaneOpenChat)
                    return;
                if (const auto chatID = json::text(userInfo, u"chat_id"))
                    selectedChatID = *chatID;
            });
}

QString MessengerChatListView::badge() const {
    const qint64 sum = unreadSum();
    if (sum < 1)
        return {};
    return sum > highestBadge ? u"99+"_s : QString::number(sum);
}

void MessengerChatListView::openAssistant() {
    if (const MessengerChat *chat = assistantChat())
        selectedChatID = chat->id;
    else if (const auto contact = assistantContact())
        launch(openDirectChat(shared_from_this(), *contact));
}

const MessengerChat *MessengerChatListView::assistantChat() const {
    const MessengerChat *chat = chats.findFirst([](const MessengerChat &candidate) {
        return candidate.participants.contains(MessengerMock::aiAssistant().id);
    });
    const auto contact = chat ? std::nullopt : assistantContact();
    if (!contact)
        return chat;
    return chats.findFirst([&contact](const MessengerChat &candidate) {
        return candidate.type == ChatType::direct && candidate.participants.contains(*contact);
    });
}

std::optional<QString> MessengerChatListView::assistantContact() const {
    if (!m_parts.session.offers(ServerFeature::assistantContact))
        return std::nullopt;
    for (const MessengerUser &user : contacts) {
        if (user.username == QLatin1StringView(assistantUsername))
            return user.id;
    }
    return std::nullopt;
}

bool MessengerChatListView::isAssistantChat(const QString &chatID) const {
    const MessengerChat *chat = assistantChat();
    return chat && chat->id == chatID;
}

QString MessengerChatListView::localSavedChatID() const {
    return u"saved_"_s + m_parts.session.userIdText();
}

void MessengerChatListView::openSavedChat() {
    if (const std::optional<QString> &saved = savedChatID.value())
        selectedChatID = *saved;
    else
        launch(findSavedChat(shared_from_this()));
}

void MessengerChatListView::openRow(int row) {
    if (row >= 0 && row < chats.count())
        selectedChatID = chats.at(row).id;
}

void MessengerChatListView::openNeighbour(int step) {
    const int row = chats.rowOf(selectedChatID);
    if (row >= 0)
        openRow(row + step);
    else
        openRow(0);
}

void MessengerChatListView::togglePinned(const QString &chatID) {
    chats.setPinned(chatID, !chats.isPinned(chatID));
}

void MessengerChatListView::deleteChat(const QString &chatID) {
    chats.remove(chatID);
    openSelectedChat();
    updateDockBadge();
}

QList<MessengerUser> MessengerChatListView::people() const {
    QList<MessengerUser> known = contacts.values();
    std::sort(known.begin(), known.end(), [](const MessengerUser &a, const MessengerUser &b) {
        const int order = QString::localeAwareCompare(a.displayName, b.displayName);
        return order == 0 ? a.id < b.id : order < 0;
    });
    return known;
}

StarredMessagesView *MessengerChatListView::starredMessages() {
    m_starred = makeScreen<StarredMessagesView>(m_parts.session, m_parts.api, contacts);
    return keptHere(m_starred);
}

MessengerContactListView *MessengerChatListView::contactList() {
    m_contactList = makeScreen<MessengerContactListView>(m_parts.session, m_parts.api, m_parts.importer());
    return keptHere(m_contactList);
}

P2PLanPanelView *MessengerChatListView::p2pPanel() {
    m_p2pPanel = makeScreen<P2PLanPanelView>(m_parts.lan());
    return keptHere(m_p2pPanel);
}

QCoro::Task<void> MessengerChatListView::syncDevice(Self self) {
    const QJsonObject sync = co_await self->m_parts.api.pullDeviceSync();
    if (const auto cursor = json::integer(sync, u"cursor"))
        self->m_parts.session.adoptSyncCursor(*cursor);
    const QByteArray answer = co_await self->m_parts.api.get(u"/api/messenger/federation/info"_s);
    if (const auto federation = json::readObject(answer))
        self->m_parts.session.adoptFederation(*federation);
}

QCoro::Task<void> MessengerChatListView::loadContactsAndChats(Self self) {
    const std::optional<QList<QJsonObject>> known =
        co_await dropped(self->m_parts.api.fetchContacts(self->m_parts.session.userIdText()),
                         "without contacts the chats are still worth showing");
    const std::optional<QList<MessengerChat>> loaded =
        co_await dropped(self->m_parts.api.fetchChats(), "the sample chats stand in");
    self->showPeople(known.value_or(QList<QJsonObject>()));
    self->showChats(loaded.value_or(QList<MessengerChat>()));
    self->isLoading = false;
}

QCoro::Task<void> MessengerChatListView::loadStarredCount(Self self) {
    const std::optional<QList<QJsonObject>> starred = co_await dropped(
        self->m_parts.api.fetchStarredMessages(self->m_parts.session.userIdText()), nobodyKnows);
    self->starredCount = starred ? starred->size() : 0;
}

QCoro::Task<void> MessengerChatListView::loadMentionsCount(Self self) {
    const std::optional<QList<QJsonObject>> mentions =
        co_await dropped(self->m_parts.api.fetchMentions(self->m_parts.session.userIdText()), nobodyKnows);
    self->mentionsCount = mentions ? mentions->size() : 0;
}

QCoro::Task<void> MessengerChatListView::findSavedChat(Self self) {
    const QString user = self->m_parts.session.userIdText();
    const std::optional<QJsonObject> answer =
        co_await dropped(self->m_parts.api.getOrCreateSavedChat(user), "there is still a chat to open");
    const auto id = answer ? chatIdIn(*answer) : self->localSavedChatID();
    if (!id)
        co_return;
    if (answer)
        self->savedChatID = id;
    MessengerChat saved = newChat(*id, ChatType::direct, u"Saved Messages"_s);
    saved.participants = {user};
    self->openListed(saved);
}

QCoro::Task<void> MessengerChatListView::openDirectChat(Self self, QString userID) {
    const QString me = self->m_parts.session.userIdText();
    const QStringList others{userID};
    const std::optional<QJsonObject> answer = co_await dropped(
        self->m_parts.api.createChat(me, u"direct"_s, std::nullopt, others), "the row can be pressed again");
    const auto id = answer ? chatIdIn(*answer) : std::nullopt;
    if (!id)
        co_return;
    MessengerChat chat = newChat(*id, ChatType::direct, {});
    chat.title = std::nullopt;
    chat.participants = {me, userID};
    self->openListed(chat);
}

void MessengerChatListView::openListed(const MessengerChat &chat) {
    if (!chats.find(chat.id))
        chats.insertFirst(chat);
    selectedChatID = chat.id;
}

void MessengerChatListView::showPeople(const QList<QJsonObject> &records) {
    MessengerUser me = MessengerMock::currentUser();
    me.id = m_parts.session.userIdText();
    const MessengerUser &assistant = MessengerMock::aiAssistant();
    contacts = {{me.id, me}, {assistant.id, assistant}};
    for (const QJsonObject &record : records) {
        if (const auto user = MessengerUser::fromContact(record))
            contacts.insert(user->id, *user);
    }
    contactsChanged();
    if (m_openChat)
        m_openChat->useContacts(contacts);
}

void MessengerChatListView::showChats(QList<MessengerChat> loaded) {
    if (loaded.isEmpty()) {
        loaded = MessengerMock::sampleChats();
        for (MessengerChat &chat : loaded)
            chat.participants.removeIf([this](const QString &id) { return !contacts.contains(id); });
    }
    chats.assign(loaded);
    openSelectedChat();
    updateDockBadge();
}

void MessengerChatListView::filterChats() {
    const ChatFolder *folder = m_folders->active();
    const QString text = searchText;
    if (!folder && text.isEmpty()) {
        chats.setFilter({});
        return;
    }
    const std::optional<QSet<QString>> members =
        folder ? std::optional(QSet<QString>(folder->chatIds.begin(), folder->chatIds.end())) : std::nullopt;
    chats.setFilter([this, members, text](const MessengerChat &chat) {
        return (!members || members->contains(chat.id)) &&
               (text.isEmpty() || chats.displayName(chat).contains(text, Qt::CaseInsensitive));
    });
}

void MessengerChatListView::handleEvent(const WSEvent &event) {
    if (event.type == eventname::message) {
        if (const auto arrived = ArrivedMessage::from(event.data))
            handleNewMessage(*arrived);
    } else if (event.type == eventname::userStatus) {
        if (const auto change = PresenceChange::from(event.data))
            handleUserStatus(*change);
    }
}

void MessengerChatListView::handleNewMessage(const ArrivedMessage &arrived) {
    const MessengerChat *known = chats.find(arrived.chatID);
    if (!known)
        return;
    MessengerChat chat = *known;
    chat.lastMessage = arrived.message;
    // The server may have said any number before.
    if (selectedChatID.value() != chat.id && chat.unreadCount < std::numeric_limits<qint64>::max())
        chat.unreadCount += 1;
    chats.replace(chat);
    updateDockBadge();
    m_parts.notifications().notify(chat.id, chats.displayName(chat),
                                   nameOf(arrived.message.senderID, contacts, u"Someone"_s),
                                   arrived.message.content);
}

void MessengerChatListView::handleUserStatus(const PresenceChange &change) {
    const auto user = contacts.find(change.userID);
    if (user == contacts.end())
        return;
    user->status = change.status;
    contactsChanged();
}

void MessengerChatListView::contactsChanged() {
    chats.contactsChanged();
    Q_EMIT peopleChanged();
}

void MessengerChatListView::openNewChat(const MessengerChat &chat) {
    chats.insertFirst(chat);
    selectedChatID = chat.id;
}

void MessengerChatListView::openSelectedChat() {
    const MessengerChat *chat = chats.find(selectedChatID);
    if (const int row = m_channels->channels.rowOf(selectedChatID); !chat && row >= 0)
        chat = &m_channels->channels.at(row);
    const QString openID = m_openChat ? m_openChat->chat.id : QString();
    if (chat && openID == chat->id)
        return;
    // The screen that closes may still be drawn, and its tasks may still be running.
    const std::shared_ptr<MessengerChatView> closing = std::move(m_openChat);
    if (chat) {
        m_openChat = makeScreen<MessengerChatView>(*chat, contacts, m_parts.session.userIdText(), m_parts);
        m_openChat->appear();
    }
    if (closing)
        closing->disappear();
    if (closing || m_openChat)
        Q_EMIT openChatChanged();
}

void MessengerChatListView::updateDockBadge() {
    if (std::exchange(m_shownSum, unreadSum()) != m_shownSum)
        Q_EMIT badgeChanged();
}

} // namespace orvane
