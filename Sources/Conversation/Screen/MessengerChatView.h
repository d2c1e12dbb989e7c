// SPDX-License-Identifier: MIT
#pragma once

#include "Base/Observable.h"
#include "Base/RecordList.h"
#include "Conversation/Actions/MessageActions.h"
#include "Conversation/Actions/MessageForwarding.h"
#include "Conversation/Assistant/ChatAssistant.h"
#include "Conversation/Messages/Links.h"
#include "Conversation/Messages/MessageCipher.h"
#include "Conversation/Messages/MessageRows.h"
#include "Conversation/Receiving/ChatEvents.h"
#include "Conversation/Receiving/HistoryLoader.h"
#include "Conversation/Screen/ChatParts.h"
#include "Conversation/Sending/MessageSender.h"
#include "Model/MessengerChat.h"

#include <QCoroTask>
#include <QSet>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

/// The screen of one open chat: its messages, oldest first, and what is being written. This class holds the
/// state that the window shows; what happens to it is in the parts named at its end. Nothing of it is kept on
/// disk; opening the chat again rebuilds it from the server. Main thread.
class MessengerChatView : public QObject, public std::enable_shared_from_this<MessengerChatView> {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The chat list opens chats.")
    Q_PROPERTY(orvane::MessengerChat chat MEMBER chat CONSTANT)
    Q_PROPERTY(QString currentUserID MEMBER currentUserID CONSTANT)
    Q_PROPERTY(QString title READ title CONSTANT)
    /// What the view of `messages` shows.
    Q_PROPERTY(orvane::MessageRows *rows READ rows CONSTANT)
    /// The end-to-end layer is on.
    Q_PROPERTY(bool isEncrypting READ isEncrypting CONSTANT)
    /// Of the own identity key, in groups of four; empty while there is none.
    Q_PROPERTY(QString fingerprint READ fingerprint CONSTANT)
    /// The pinned among `messages`, in their order.
    Q_PROPERTY(QList<orvane::MessengerMessage> pinnedMessages READ pinnedMessages NOTIFY pinnedChanged)
    /// Who types now, in words; empty for nobody.
    Q_PROPERTY(QString typingLine READ typingLine NOTIFY typingChanged)

    OBSERVABLE(QString, inputText)
    OBSERVABLE(bool, showAIPanel)
    OBSERVABLE(QString, aiRequest)
    OBSERVABLE_OPTIONAL(QString, aiResponse)
    OBSERVABLE(bool, isAILoading)
    OBSERVABLE(bool, isInputFocused)
    OBSERVABLE(QStringList, smartReplies)
    /// The messages of the own style that the replies were modelled on.
    OBSERVABLE(qint64, personaSamples)
    /// By message id, for as long as the screen lives.
    OBSERVABLE(QVariantMap, translatedText)
    OBSERVABLE_OPTIONAL(QString, translatingMsgID)
    OBSERVABLE_OPTIONAL(QString, chatSummary)
    OBSERVABLE(bool, isSummarizing)
    OBSERVABLE_OPTIONAL(MessengerMessage, replyToMessage)
    OBSERVABLE(QSet<QString>, typingUserIDs)
    OBSERVABLE(bool, showForwardPicker)
    OBSERVABLE_OPTIONAL(MessengerMessage, messageToForward)
    OBSERVABLE(QList<orvane::MessengerChat>, availableChats)
    /// Of this run only.
    OBSERVABLE(QSet<QString>, pinnedMessageIDs)
    OBSERVABLE_OPTIONAL(QString, chatContext)
    OBSERVABLE(QStringList, unansweredQuestions)
    OBSERVABLE(bool, showSearchPanel)
    OBSERVABLE(QStringList, agentResults)
    OBSERVABLE(bool, showStickerPicker)
    OBSERVABLE(bool, showPollCreator)
    OBSERVABLE_OPTIONAL(MessengerMessage, editingMessage)
    OBSERVABLE(QString, editText)
    OBSERVABLE(bool, showEditAlert)
    /// Waits for the user's word.
    OBSERVABLE_OPTIONAL(MessengerMessage, deletingMessage)
    /// The bot on the other side, if there is one.
    OBSERVABLE_OPTIONAL(QString, activeBotId)
    OBSERVABLE_OPTIONAL(QString, activeBotName)
    /// From the opening of the chat until its history is there.
    OBSERVABLE(bool, isLoading)

public:
    MessengerChatView(const MessengerChat &chat, const Contacts &contacts, const QString &currentUserID,
                      const ChatParts &parts);

    const MessengerChat chat;
    const Contacts contacts;
    const QString currentUserID;
    RecordList<MessengerMessage> messages;

    QString title() const;
    QString peerId() const { return chat.peerId(currentUserID); }
    MessageRows *rows() { return &m_rows; }
    bool isEncrypting() const { return m_cipher.isOn(); }
    QString fingerprint() const;
    QList<MessengerMessage> pinnedMessages() const;
    QString typingLine() const;

    /// The screen shows: loads what it needs, and follows the chat from now on.
    Q_INVOKABLE void appear();
    Q_INVOKABLE void disappear();
    /// Starts a session with the peer where the end-to-end layer is on, fetches the history, and follows the
    /// events of this chat from now on.
    void loadMessages();

    /// Sends `inputText` as it stands and clears it. A text of nothing but white space is left alone; one
    /// that begins with "/" is a command.
    Q_INVOKABLE void sendMessage();
    Q_INVOKABLE void sendSticker(const QString &code) { m_sender.sendSticker(code); }
    Q_INVOKABLE void sendPoll(const orvane::MessengerPoll &poll) { m_sender.sendPoll(poll); }
    /// Takes over a poll with the user's new choices and tells the others of them; a vote taken back is told
    /// to nobody.
    Q_INVOKABLE void votePoll(const orvane::MessengerPoll &poll);
    /// The folder that is offered for a saved conversation.
    Q_INVOKABLE QUrl exportFolder() const;
    /// Where the text that `exportRequested` carries goes.
    Q_INVOKABLE void saveExport(const QUrl &file, const QString &text);

    Q_INVOKABLE void copyMessage(const orvane::MessengerMessage &message) { m_actions.copy(message); }
    Q_INVOKABLE void editMessage(const orvane::MessengerMessage &message) { m_actions.edit(message); }
    Q_INVOKABLE void editLastOwnMessage();
    Q_INVOKABLE void saveEdit() { m_actions.saveEdit(); }
    Q_INVOKABLE void deleteMessage(const orvane::MessengerMessage &message) { deletingMessage = message; }
    Q_INVOKABLE void keepMessage() { deletingMessage = std::nullopt; }
    Q_INVOKABLE void performDelete();
    Q_INVOKABLE void pinUnpinMessage(const orvane::MessengerMessage &message) { m_actions.pinUnpin(message); }
    Q_INVOKABLE void toggleStar(const orvane::MessengerMessage &message) { m_actions.toggleStar(message); }
    Q_INVOKABLE void reactToMessage(const orvane::MessengerMessage &message, const QString &emoji) {
        m_actions.react(message, emoji);
    }
    Q_INVOKABLE void translateAction(const orvane::MessengerMessage &message) {
        m_actions.translate(message);
    }
    Q_INVOKABLE void replyTo(const orvane::MessengerMessage &message);
    Q_INVOKABLE void cancelReply() { replyToMessage = std::nullopt; }
    Q_INVOKABLE void pickForward(const orvane::MessengerMessage &message) { m_forwarding.pick(message); }
    Q_INVOKABLE void forwardMessage(const orvane::MessengerChat &target) { m_forwarding.forwardTo(target); }

    Q_INVOKABLE void sendAgentMessage() { m_assistant.sendAgentMessage(); }
    Q_INVOKABLE void summarizeAction(const QString &period) { m_assistant.summarizeAction(period); }
    Q_INVOKABLE void closeSummary() { chatSummary = std::nullopt; }
    Q_INVOKABLE void closeContext();

    Q_INVOKABLE void scrollToPinned() const;
    Q_INVOKABLE bool isPinned(const QString &messageID) const;
    Q_INVOKABLE QString senderName(const QString &userID) const;
    /// The same, but "You" for the person at this window.
    Q_INVOKABLE QString nameInChat(const QString &userID) const;
    Q_INVOKABLE QString chatName(const orvane::MessengerChat &other) const;
    /// The id that a chat has its colour from.
    Q_INVOKABLE QString hueIdOf(const orvane::MessengerChat &some) const;
    /// The first addresses that a message leads to, each once; no more than a menu should begin with.
    Q_INVOKABLE QStringList linksIn(const orvane::MessengerMessage &message);
    /// In the person's browser; http and https only.
    Q_INVOKABLE void openLink(const QString &address) const { Link::open(address); }
    /// A content as a person reads it.
    Q_INVOKABLE QString plainText(const QString &content) { return m_cipher.plainText(content); }

    const ChatParts &parts() const { return m_parts; }
    MessageCipher &cipher() { return m_cipher; }

    /// Changes the record in this row; a row of -1 changes nothing.
    template <typename Change>
    void changeAt(int row, Change change) {
        if (row < 0)
            return;
        MessengerMessage message = messages.at(row);
        change(message);
        messages.replace(row, message);
    }
    /// Changes the first record with this id, if there is one.
    template <typename Change>
    void change(const QString &messageID, Change change) {
        changeAt(messages.rowOf(messageID), change);
    }
    void setDeliveryStatus(const QString &messageID, DeliveryStatus status);
    void removeAll(const QString &messageID);
    /// The first row with this poll, or -1.
    int rowOfPoll(const QString &pollID) const;

Q_SIGNALS:
    void pinnedChanged();
    void typingChanged();
    /// The conversation in words waits for a place to be saved at.
    void exportRequested(const QString &text);

private:
    using Self = std::shared_ptr<MessengerChatView>;

    static QCoro::Task<void> establishSession(Self self);
    static QCoro::Task<void> findBot(Self self);

    void handleSlash(const QString &text);
    void subscribeP2P();
    void loadBotMeta();

    const ChatParts m_parts;
    MessageCipher m_cipher;
    HistoryLoader m_history{*this};
    ChatEvents m_events{*this};
    MessageSender m_sender{*this};
    MessageActions m_actions{*this};
    MessageForwarding m_forwarding{*this};
    ChatAssistant m_assistant{*this};
    MessageRows m_rows{*this};
    QPropertyNotifier m_pinned;
    QPropertyNotifier m_typing;
};

} // namespace orvane
