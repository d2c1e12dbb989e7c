// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "ChatList/Chats/ChatRows.h"
#include "ChatList/Chats/ListEvents.h"
#include "ChatList/Finding/MessageSearch.h"
#include "ChatList/Finding/StarredMessagesView.h"
#include "ChatList/Organising/Channels.h"
#include "ChatList/Organising/Folders.h"
#include "ChatList/Organising/NewGroup.h"
#include "ChatList/People/ContactImporter.h"
#include "ChatList/People/MessengerContactListView.h"
#include "Conversation/Chat/ChatNotificationBridge.h"
#include "Conversation/Screen/MessengerChatView.h"
#include "LocalNetwork/P2PLanPanelView.h"
#include "Server/MessengerAPI.h"
#include "Server/MessengerWebSocket.h"
#include "Session/MessengerSession.h"

#include <QCoroTask>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>

namespace orvane {

/// The main screen after sign-in: the user's chats, kept current by the server's events, beside the open
/// chat. What it makes new and arranges has parts of its own. Main thread.
class MessengerChatListView : public QObject, public std::enable_shared_from_this<MessengerChatListView> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application shows the chat list.")
    Q_PROPERTY(orvane::RecordListModel *sortedChats READ sortedChats CONSTANT)
    Q_PROPERTY(orvane::MessageSearch *search READ search CONSTANT)
    Q_PROPERTY(orvane::NewGroup *newGroup READ newGroup CONSTANT)
    Q_PROPERTY(orvane::Channels *channels READ channels CONSTANT)
    Q_PROPERTY(orvane::Folders *folders READ folders CONSTANT)
    /// The chat screen of `selectedChatID`; null while no known chat is selected.
    Q_PROPERTY(orvane::MessengerChatView *openChat READ openChat NOTIFY openChatChanged)
    /// Everybody in `contacts`, by name.
    Q_PROPERTY(QList<orvane::MessengerUser> people READ people NOTIFY peopleChanged)
    /// Of the saved chat that stands in while the server gives none.
    Q_PROPERTY(QString localSavedChatID READ localSavedChatID CONSTANT)
    /// What the application's badge says; empty for none.
    Q_PROPERTY(QString badge READ badge NOTIFY badgeChanged)
    Q_PROPERTY(qint64 unreadSum READ unreadSum NOTIFY badgeChanged)

    OBSERVABLE(QString, searchText)
    /// Empty while no chat is open.
    OBSERVABLE(QString, selectedChatID)
    OBSERVABLE(bool, showContacts)
    OBSERVABLE(bool, showStarred)
    OBSERVABLE(bool, showP2P)
    OBSERVABLE_OPTIONAL(QString, savedChatID)
    OBSERVABLE(qint64, starredCount)
    OBSERVABLE(qint64, mentionsCount)
    /// Until the first list of chats is there.
    OBSERVABLE(bool, isLoading, true)

public:
    /// What the screen and the chats that it opens stand on; it all outlives them.
    struct Parts : ChatParts {
        MessengerSession &session;
        /// Made at its first use.
        std::function<ContactImporter &()> importer = &ContactImporter::shared;
        /// Likewise.
        std::function<MessengerP2PLanService &()> lan = &MessengerP2PLanService::shared;
    };
    explicit MessengerChatListView(const Parts &parts);

    Contacts contacts;
    ChatRows chats;

    RecordListModel *sortedChats() { return &chats; }
    MessageSearch *search() const { return m_search.get(); }
    NewGroup *newGroup() const { return m_newGroup.get(); }
    Channels *channels() const { return m_channels.get(); }
    Folders *folders() const { return m_folders.get(); }
    MessengerChatView *openChat() const { return m_openChat.get(); }
    QString badge() const;
    qint64 unreadSum() const { return chats.unreadSum(); }

    /// The screen shows: loads everything.
    Q_INVOKABLE void appear();
    /// Connects the event socket, follows its events, and starts three tasks that don't wait for each other:
    /// the registration of this device, the device sync with the federation's identity, and contacts with
    /// chats.
    void loadData();

    /// The first chat with the assistant, if there is one; where the server announces that the assistant is a
    /// contact, the direct chat with that contact.
    Q_INVOKABLE void openAssistant();
    /// The user's own space, which the server makes at the first time; there is always one that opens.
    Q_INVOKABLE void openSavedChat();
    Q_INVOKABLE bool isAssistantChat(const QString &chatID) const;
    QString localSavedChatID() const;
    /// The row's chat by its place in the list, if there is one.
    Q_INVOKABLE void openRow(int row);
    /// The chat that stands `step` rows further than the open one.
    Q_INVOKABLE void openNeighbour(int step);

    Q_INVOKABLE bool isPinned(const QString &chatID) const { return chats.isPinned(chatID); }
    /// For as long as this screen lives.
    Q_INVOKABLE void togglePinned(const QString &chatID);
    /// On this machine only: the next list of the server brings it back.
    Q_INVOKABLE void deleteChat(const QString &chatID);

    QList<MessengerUser> people() const;
    /// A new sheet of starred messages; there is one at a time.
    Q_INVOKABLE orvane::StarredMessagesView *starredMessages();
    /// A new sheet of contacts, likewise.
    Q_INVOKABLE orvane::MessengerContactListView *contactList();
    /// A new sheet of direct delivery, likewise.
    Q_INVOKABLE orvane::P2PLanPanelView *p2pPanel();

Q_SIGNALS:
    void openChatChanged();
    void peopleChanged();
    void badgeChanged();

private:
    using Self = std::shared_ptr<MessengerChatListView>;

    static QCoro::Task<void> syncDevice(Self self);
    static QCoro::Task<void> loadContactsAndChats(Self self);
    static QCoro::Task<void> loadStarredCount(Self self);
    static QCoro::Task<void> loadMentionsCount(Self self);
    static QCoro::Task<void> findSavedChat(Self self);
    static QCoro::Task<void> openDirectChat(Self self, QString userID);

    void observeWSEvents();
    void observeNotifications();
    void showPeople(const QList<QJsonObject> &records);
    void showChats(QList<MessengerChat> loaded);
    void filterChats();
    void handleEvent(const WSEvent &event);
    void handleNewMessage(const ArrivedMessage &arrived);
    void handleUserStatus(const PresenceChange &change);
    void contactsChanged();
    void openNewChat(const MessengerChat &chat);
    void openListed(const MessengerChat &chat);
    const MessengerChat *assistantChat() const;
    std::optional<QString> assistantContact() const;
    void openSelectedChat();
    void updateDockBadge();

    Parts m_parts;
    std::shared_ptr<MessageSearch> m_search;
    std::shared_ptr<NewGroup> m_newGroup;
    std::shared_ptr<Channels> m_channels;
    std::shared_ptr<Folders> m_folders;
    std::shared_ptr<StarredMessagesView> m_starred;
    std::shared_ptr<MessengerContactListView> m_contactList;
    std::shared_ptr<P2PLanPanelView> m_p2pPanel;
    std::shared_ptr<MessengerChatView> m_openChat;
    qint64 m_shownSum = 0;
    QMetaObject::Connection wsObserver;
    QPropertyNotifier m_selection;
    QPropertyNotifier m_searchText;
};

} // namespace orvane
