// SPDX-License-Identifier: MIT
#pragma once

#include "Base/ObservableOf.h"
#include "Conversation/Actions/MessageEditing.h"
#include "Conversation/Actions/MessageForwarding.h"
#include "Conversation/Actions/MessagePins.h"
#include "Conversation/Actions/MessageTranslation.h"
#include "Conversation/Assistant/ChatAssistant.h"
#include "Conversation/Chat/Conversation.h"
#include "Conversation/Messages/MessageRows.h"
#include "Conversation/Receiving/ChatEvents.h"
#include "Conversation/Sending/MessageSender.h"

#include <QCoroTask>
#include <QtQml/qqmlregistration.h>

#include <memory>

namespace orvane {

/// The screen of one open chat: its messages, and what is being written. What can be done in it is in parts
/// that own their state; here that state has the names by which the screen is known. Nothing of it is kept on
/// disk; opening the chat again rebuilds it from the server. Main thread.
class MessengerChatView : public QObject, public Conversation {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The chat list opens chats.")
    Q_PROPERTY(orvane::MessengerChat chat MEMBER chat CONSTANT)
    Q_PROPERTY(QString currentUserID MEMBER currentUserID CONSTANT)
    Q_PROPERTY(QString title READ title NOTIFY contactsChanged)
    /// The id that the chat has its colour from.
    Q_PROPERTY(QString hueId READ hueId CONSTANT)
    /// The end-to-end layer is on.
    Q_PROPERTY(bool isEncrypting READ isEncrypting CONSTANT)
    /// Of the own identity key, in groups of four; empty while there is none.
    Q_PROPERTY(QString fingerprint READ fingerprint CONSTANT)
    /// Who types now, in words; empty for nobody.
    Q_PROPERTY(QString typingLine READ typingLine NOTIFY typingChanged)
    /// What the view of `messages` shows.
    Q_PROPERTY(orvane::MessageRows *rows READ rows CONSTANT)
    Q_PROPERTY(orvane::ChatAssistant *assistant READ assistant CONSTANT)
    Q_PROPERTY(orvane::MessageEditing *editing READ editing CONSTANT)
    Q_PROPERTY(orvane::MessageForwarding *forwarding READ forwarding CONSTANT)
    Q_PROPERTY(orvane::MessagePins *pins READ pins CONSTANT)

    ChatAssistant m_assistant{*this};
    MessageTranslation m_translation{*this};
    MessageSender m_sender{*this};
    ChatEvents m_events{*this};
    MessageForwarding m_forwarding{*this};
    MessagePins m_pins{*this};
    MessageEditing m_editing{*this};
    MessageRows m_rows{*this, m_pins, m_translation};

    OBSERVABLE(QString, inputText)
    OBSERVABLE_OF(m_assistant, bool, showAIPanel)
    OBSERVABLE_OF(m_assistant, QString, aiRequest)
    OBSERVABLE_OPTIONAL_OF(m_assistant, QString, aiResponse)
    OBSERVABLE_OF(m_assistant, bool, isAILoading)
    OBSERVABLE(bool, isInputFocused)
    OBSERVABLE_OF(m_assistant, QStringList, smartReplies)
    OBSERVABLE_OF(m_assistant, qint64, personaSamples)
    OBSERVABLE_OF(m_translation, QVariantMap, translatedText)
    OBSERVABLE_OPTIONAL_OF(m_translation, QString, translatingMsgID)
    OBSERVABLE_OPTIONAL_OF(m_assistant, QString, chatSummary)
    OBSERVABLE_OF(m_assistant, bool, isSummarizing)
    OBSERVABLE_OPTIONAL_OF(m_sender, MessengerMessage, replyToMessage)
    OBSERVABLE_OF(m_events, QSet<QString>, typingUserIDs)
    OBSERVABLE_OF(m_forwarding, bool, showForwardPicker)
    OBSERVABLE_OPTIONAL_OF(m_forwarding, MessengerMessage, messageToForward)
    OBSERVABLE_OF(m_forwarding, QList<orvane::MessengerChat>, availableChats)
    OBSERVABLE_OF(m_pins, QSet<QString>, pinnedMessageIDs)
    OBSERVABLE_OPTIONAL_OF(m_assistant, QString, chatContext)
    OBSERVABLE_OF(m_assistant, QStringList, unansweredQuestions)
    OBSERVABLE_OF(m_assistant, bool, showSearchPanel)
    OBSERVABLE_OF(m_assistant, QStringList, agentResults)
    OBSERVABLE(bool, showStickerPicker)
    OBSERVABLE(bool, showPollCreator)
    OBSERVABLE_OPTIONAL_OF(m_editing, MessengerMessage, editingMessage)
    OBSERVABLE_OF(m_editing, QString, editText)
    OBSERVABLE_OF(m_editing, bool, showEditAlert)
    OBSERVABLE_OPTIONAL_OF(m_editing, MessengerMessage, deletingMessage)
    /// The bot on the other side, if there is one.
    OBSERVABLE_OPTIONAL(QString, activeBotId)
    OBSERVABLE_OPTIONAL(QString, activeBotName)
    /// From the opening of the chat until its history is there.
    OBSERVABLE(bool, isLoading)

public:
    MessengerChatView(const MessengerChat &openChat, const Contacts &knownContacts, const QString &userID,
                      const ChatParts &chatParts);

    QString title() const { return chat.visibleName(currentUserID, contacts); }
    QString hueId() const { return chat.hueId(currentUserID); }
    bool isEncrypting() const { return cipher.isOn(); }
    QString fingerprint() const;
    QString typingLine() const;
    MessageRows *rows() { return &m_rows; }
    ChatAssistant *assistant() { return &m_assistant; }
    MessageEditing *editing() { return &m_editing; }
    MessageForwarding *forwarding() { return &m_forwarding; }
    MessagePins *pins() { return &m_pins; }

    /// The screen shows: loads what it needs, and follows the chat from now on.
    Q_INVOKABLE void appear();
    Q_INVOKABLE void disappear();
    /// Starts a session with the peer where the end-to-end layer is on, fetches the history, and follows the
    /// events of this chat from now on.
    void loadMessages();
    /// The people that are known from now on.
    void useContacts(const Contacts &known);

    /// Sends `inputText` as it stands and clears it. A text of nothing but white space is left alone; one
    /// that begins with "/" is a command.
    Q_INVOKABLE void sendMessage();
    Q_INVOKABLE void sendSticker(const QString &code) { m_sender.sendSticker(code); }
    Q_INVOKABLE void sendPoll(const orvane::MessengerPoll &poll) { m_sender.sendPoll(poll); }
    Q_INVOKABLE void votePoll(const orvane::MessengerPoll &poll) { m_sender.votePoll(poll); }
    /// The folder that is offered for a saved conversation.
    Q_INVOKABLE QUrl exportFolder() const;
    /// Where the text that `exportRequested` carries goes.
    Q_INVOKABLE void saveExport(const QUrl &file, const QString &text);

    Q_INVOKABLE void copyMessage(const orvane::MessengerMessage &message);
    Q_INVOKABLE void editMessage(const orvane::MessengerMessage &message) { m_editing.edit(message); }
    Q_INVOKABLE void editLastOwnMessage() { m_editing.editLastOwn(); }
    Q_INVOKABLE void deleteMessage(const orvane::MessengerMessage &message) { deletingMessage = message; }
    Q_INVOKABLE void performDelete() { m_editing.performDelete(); }
    Q_INVOKABLE void pinUnpinMessage(const orvane::MessengerMessage &message) { m_pins.pinUnpin(message); }
    Q_INVOKABLE void toggleStar(const orvane::MessengerMessage &message);
    Q_INVOKABLE void reactToMessage(const orvane::MessengerMessage &message, const QString &emoji);
    Q_INVOKABLE void translateAction(const orvane::MessengerMessage &message) {
        m_translation.translate(message);
    }
    Q_INVOKABLE void replyTo(const orvane::MessengerMessage &message);
    Q_INVOKABLE void cancelReply() { replyToMessage = std::nullopt; }
    Q_INVOKABLE void pickForward(const orvane::MessengerMessage &message) { m_forwarding.pick(message); }
    Q_INVOKABLE void forwardMessage(const orvane::MessengerChat &target) { m_forwarding.forwardTo(target); }
    Q_INVOKABLE void sendAgentMessage() { m_assistant.sendAgentMessage(); }
    Q_INVOKABLE void summarizeAction(const QString &period) { m_assistant.summarizeAction(period); }

    Q_INVOKABLE QString nameInChat(const QString &userID) const { return Conversation::nameInChat(userID); }
    /// A content as a person reads it where there is room for one line.
    Q_INVOKABLE QString lineOf(const QString &content) { return Conversation::lineOf(content); }
    /// The first addresses that a message leads to.
    Q_INVOKABLE QStringList linksIn(const orvane::MessengerMessage &message);
    /// In the person's browser; http and https only.
    Q_INVOKABLE void openLink(const QString &address) const;

Q_SIGNALS:
    void contactsChanged();
    void typingChanged();
    /// The conversation in words waits for a place to be saved at.
    void exportRequested(const QString &text);

private:
    using Self = std::shared_ptr<MessengerChatView>;

    static QCoro::Task<void> establishSession(Self self);
    static QCoro::Task<void> showHistory(Self self);
    static QCoro::Task<void> findBot(Self self);

    void handleSlash(const QString &text);
    void loadBotMeta();
};

} // namespace orvane
