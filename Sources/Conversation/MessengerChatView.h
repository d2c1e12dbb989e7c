#pragma once

#include "Base/Observable.h"
#include "Base/RecordList.h"
#include "Conversation/MessageCipher.h"
#include "Conversation/MessagePlacement.h"
#include "Model/MessengerChat.h"
#include "Server/MessengerAPI.h"
#include "Server/MessengerWebSocket.h"

#include <QCoroTask>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

/// The screen of one open chat: its messages, oldest first, and the text being written. Nothing of it is kept
/// on disk; opening the chat again rebuilds it from the server. Main thread.
class MessengerChatView : public QObject, public std::enable_shared_from_this<MessengerChatView> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The chat list opens chats.")
    Q_PROPERTY(orvane::MessengerChat chat MEMBER chat CONSTANT)
    Q_PROPERTY(QString currentUserID MEMBER currentUserID CONSTANT)
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString peerId READ peerId CONSTANT)
    Q_PROPERTY(orvane::RecordListModel *messages READ messageModel CONSTANT)
    /// The end-to-end layer is on.
    Q_PROPERTY(bool isEncrypting READ isEncrypting CONSTANT)
    /// Of the own identity key, in groups of four; empty while there is none.
    Q_PROPERTY(QString fingerprint READ fingerprint CONSTANT)

    OBSERVABLE(QString, inputText)
    /// From the opening of the chat until its history is there.
    OBSERVABLE(bool, isLoading)

public:
    /// One page of history.
    static constexpr int pageSize = 50;

    MessengerChatView(const MessengerChat &chat, const Contacts &contacts, const QString &currentUserID,
                      MessengerAPI &api = MessengerAPI::shared(),
                      MessengerWebSocket &socket = MessengerWebSocket::shared(),
                      const EndToEnd *encryption = nullptr);

    const MessengerChat chat;
    const Contacts contacts;
    const QString currentUserID;
    RecordList<MessengerMessage> messages;

    QString title() const;
    QString peerId() const { return chat.peerId(currentUserID); }
    RecordListModel *messageModel() { return &messages; }
    bool isEncrypting() const { return m_cipher.isOn(); }
    QString fingerprint() const;

    /// Starts the history task, and follows the events of this chat from now on. The history replaces
    /// whatever `messages` holds when it arrives; where it can't be had, a sample conversation stands in.
    Q_INVOKABLE void loadMessages();

    /// Sends `inputText` as it stands and clears it; a text of nothing but white space is left alone.
    Q_INVOKABLE void sendMessage();

    Q_INVOKABLE QString senderName(const QString &userID) const;
    Q_INVOKABLE orvane::MessagePlacement placement(int row) const;
    /// A message in words for assistive technology: sender, text, time and state.
    Q_INVOKABLE QString spokenMessage(const orvane::MessengerMessage &message) const;

private:
    using Self = std::shared_ptr<MessengerChatView>;

    static QCoro::Task<void> loadHistory(Self self);
    static QCoro::Task<void> establishSession(Self self);
    static QCoro::Task<void> send(Self self, QString text);
    static QCoro::Task<void> receive(Self self, QJsonObject raw);

    void showHistory(QList<MessengerMessage> history);
    void showSampleConversation();
    void sendReadReceipt();
    void handleEvent(const WSEvent &event);
    void setDeliveryStatus(const QString &messageID, DeliveryStatus status);

    MessengerAPI &m_api;
    MessengerWebSocket &m_socket;
    MessageCipher m_cipher;
    const EndToEnd *m_encryption;
};

} // namespace orvane
