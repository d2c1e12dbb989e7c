#pragma once

#include "Base/Observable.h"
#include "Base/RecordList.h"
#include "Conversation/MessengerChatView.h"
#include "Model/MessengerChat.h"
#include "Server/MessengerAPI.h"
#include "Server/MessengerWebSocket.h"
#include "Session/MessengerSession.h"

#include <QCoroTask>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

/// The main screen after sign-in: the user's chats, the newest first, kept current by the server's events,
/// beside the open chat. Main thread.
class MessengerChatListView : public QObject, public std::enable_shared_from_this<MessengerChatListView> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application shows the chat list.")
    Q_PROPERTY(orvane::RecordListModel *chats READ chatModel CONSTANT)
    /// The chat screen of `selectedChatID`; null while no known chat is selected.
    Q_PROPERTY(orvane::MessengerChatView *openChat READ openChat NOTIFY openChatChanged)

    /// Empty while no chat is open.
    OBSERVABLE(QString, selectedChatID)
    /// Until the first list of chats is there.
    OBSERVABLE(bool, isLoading, true)
    /// Grows with every change of `contacts`, for the names and presence that depend on them.
    OBSERVABLE(int, contactsRevision)

public:
    MessengerChatListView(MessengerSession &session = MessengerSession::shared(),
                          MessengerAPI &api = MessengerAPI::shared(),
                          MessengerWebSocket &socket = MessengerWebSocket::shared());

    /// Sorted by the date of the last message, newest first.
    RecordList<MessengerChat> chats;
    Contacts contacts;

    RecordListModel *chatModel() { return &chats; }
    MessengerChatView *openChat() const { return m_openChat.get(); }

    /// Connects the event socket, follows its events, and starts three tasks that don't wait for each other:
    /// the registration of this device, the device sync with the federation's identity, and contacts with
    /// chats.
    Q_INVOKABLE void loadData();

    Q_INVOKABLE QString displayName(const orvane::MessengerChat &chat) const;
    /// The other person of a direct chat; empty for all other chats.
    Q_INVOKABLE QString peerId(const orvane::MessengerChat &chat) const;
    Q_INVOKABLE bool isOnline(const QString &userID) const;
    /// The last message in one line, no longer than a row can show.
    Q_INVOKABLE QString preview(const orvane::MessengerChat &chat) const;
    /// A row in words for assistive technology: name, preview, unread count.
    Q_INVOKABLE QString spokenChat(const orvane::MessengerChat &chat) const;

Q_SIGNALS:
    void openChatChanged();

private:
    using Self = std::shared_ptr<MessengerChatListView>;

    static QCoro::Task<void> registerDevice(Self self);
    static QCoro::Task<void> syncDevice(Self self);
    static QCoro::Task<void> loadContactsAndChats(Self self);

    void showContacts(const QList<QJsonObject> &records);
    void showChats(QList<MessengerChat> loaded);
    void handleEvent(const WSEvent &event);
    void handleNewMessage(const QJsonObject &event);
    void handleUserStatus(const QJsonObject &event);
    void openSelectedChat();

    MessengerSession &m_session;
    MessengerAPI &m_api;
    MessengerWebSocket &m_socket;
    QMetaObject::Connection wsObserver;
    QPropertyNotifier m_selection;
    std::shared_ptr<MessengerChatView> m_openChat;
};

} // namespace orvane
