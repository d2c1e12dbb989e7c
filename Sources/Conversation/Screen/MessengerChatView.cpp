// SPDX-License-Identifier: MIT
#include "Conversation/Screen/MessengerChatView.h"

#include "Base/Json.h"
#include "Base/Task.h"
#include "Conversation/Actions/ChatExport.h"
#include "Conversation/Actions/MessageActions.h"
#include "Conversation/Messages/Links.h"
#include "Conversation/Receiving/ChatHistory.h"
#include "Platform/Folders.h"

using namespace Qt::StringLiterals;

namespace orvane {

MessengerChatView::MessengerChatView(const MessengerChat &openChat, const Contacts &knownContacts,
                                     const QString &userID, const ChatParts &chatParts)
    : Conversation(openChat, knownContacts, userID, chatParts) {
    connect(this, &MessengerChatView::typingUserIDsChanged, this, &MessengerChatView::typingChanged);
    connect(this, &MessengerChatView::contactsChanged, this, &MessengerChatView::typingChanged);
    connect(this, &MessengerChatView::contactsChanged, &m_rows, &MessageRows::nameAgain);
}

QString MessengerChatView::fingerprint() const {
    return parts.encryption ? parts.encryption->crypto().fingerprint.value() : QString();
}

void MessengerChatView::appear() {
    loadMessages();
    if (chat.aiEnabled)
        m_assistant.analyzeChat();
    m_events.followLocalNetwork();
    loadBotMeta();
    parts.notifications().activeChatID = chat.id;
    m_forwarding.loadAvailableChats();
}

void MessengerChatView::disappear() {
    std::optional<QString> &active = parts.notifications().activeChatID;
    // The screen that follows may have appeared already.
    if (active == chat.id)
        active = std::nullopt;
}

void MessengerChatView::loadMessages() {
    launch(establishSession(hold(this)));
    isLoading = true;
    launch(showHistory(hold(this)));
    m_events.followServer();
}

QCoro::Task<void> MessengerChatView::establishSession(Self self) {
    const bool began = co_await self->cipher.establishSession(self->peerId());
    if (began)
        self->m_rows.readAgain();
}

QCoro::Task<void> MessengerChatView::showHistory(Self self) {
    co_await loadHistory(self);
    self->isLoading = false;
}

void MessengerChatView::useContacts(const Contacts &known) {
    contacts = known;
    Q_EMIT contactsChanged();
}

void MessengerChatView::loadBotMeta() {
    if (chat.type != ChatType::direct || peerId().isEmpty())
        return;
    const auto peer = contacts.constFind(peerId());
    if (peer == contacts.constEnd() || !peer->isAI) {
        launch(findBot(hold(this)));
        return;
    }
    activeBotId = peer->id;
    activeBotName = peer->displayName;
}

QCoro::Task<void> MessengerChatView::findBot(Self self) {
    const std::optional<QList<QJsonObject>> found =
        co_await dropped(self->parts.api.searchUsers(self->peerId(), self->currentUserID),
                         "the chat is shown as one with a person");
    if (!found || found->isEmpty())
        co_return;
    const QJsonObject &user = found->first();
    const QString username = json::text(user, u"username").value_or(QString());
    if (!json::boolean(user, u"is_bot").value_or(false) && !username.startsWith("bot_"_L1))
        co_return;
    self->activeBotId = self->peerId();
    self->activeBotName = json::text(user, u"display_name").value_or(username);
}

void MessengerChatView::sendMessage() {
    const QString text = inputText;
    if (text.trimmed().isEmpty())
        return;
    inputText = QString();
    if (text.startsWith(u'/'))
        handleSlash(text);
    else
        m_sender.sendText(text);
}

void MessengerChatView::handleSlash(const QString &text) {
    const QString command = text.section(u' ', 0, 0, QString::SectionSkipEmpty).toLower();
    if (command == "/export"_L1)
        Q_EMIT exportRequested(exportedConversation(*this));
}

QUrl MessengerChatView::exportFolder() const {
    return QUrl::fromLocalFile(folders::documents());
}

void MessengerChatView::saveExport(const QUrl &file, const QString &text) {
    writeExport(file, text);
}

void MessengerChatView::copyMessage(const MessengerMessage &message) {
    orvane::copyMessage(*this, message);
}

void MessengerChatView::toggleStar(const MessengerMessage &message) {
    orvane::toggleStar(*this, message);
}

void MessengerChatView::reactToMessage(const MessengerMessage &message, const QString &emoji) {
    orvane::reactToMessage(*this, message, emoji);
}

void MessengerChatView::replyTo(const MessengerMessage &message) {
    replyToMessage = message;
    isInputFocused = true;
}

QString MessengerChatView::typingLine() const {
    QStringList names;
    for (const QString &userID : typingUserIDs.value())
        names.append(senderName(userID));
    names.sort();
    if (names.isEmpty())
        return {};
    return names.size() == 1 ? names.first() + u" is typing…"_s : names.join(u", "_s) + u" are typing…"_s;
}

QStringList MessengerChatView::linksIn(const MessengerMessage &message) {
    return Link::firstAddressesIn(cipher.plainText(message.content));
}

void MessengerChatView::openLink(const QString &address) const {
    Link::open(address);
}

} // namespace orvane
