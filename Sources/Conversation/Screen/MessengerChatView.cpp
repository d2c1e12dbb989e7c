// SPDX-License-Identifier: MIT
#include "Conversation/Screen/MessengerChatView.h"

#include "Base/Json.h"
#include "Base/LogLine.h"
#include "Base/Task.h"
#include "Conversation/Actions/ChatExport.h"
#include "Platform/Folders.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

constexpr int mostLinks = 3;
constexpr int searchedLength = 100'000;

} // namespace

MessengerChatView::MessengerChatView(const MessengerChat &openChat, const Contacts &knownContacts,
                                     const QString &userID, const ChatParts &parts)
    : chat(openChat)
    , contacts(knownContacts)
    , currentUserID(userID)
    , m_parts(parts)
    , m_cipher(chat, parts.api, parts.encryption)
    , m_pinned(pinnedMessageIDs.addNotifier([this] { Q_EMIT pinnedChanged(); }))
    , m_typing(typingUserIDs.addNotifier([this] { Q_EMIT typingChanged(); })) {
    const auto pinnedMayDiffer = [this] {
        if (!pinnedMessageIDs.value().isEmpty())
            Q_EMIT pinnedChanged();
    };
    connect(&messages, &RecordListModel::countChanged, this, pinnedMayDiffer);
    connect(&messages, &RecordListModel::dataChanged, this, pinnedMayDiffer);
}

QString MessengerChatView::title() const {
    return chat.visibleName(currentUserID, contacts);
}

QString MessengerChatView::fingerprint() const {
    return m_parts.encryption ? m_parts.encryption->crypto().fingerprint.value() : QString();
}

void MessengerChatView::appear() {
    loadMessages();
    if (chat.aiEnabled)
        m_assistant.analyzeChat();
    subscribeP2P();
    loadBotMeta();
    m_parts.notifications().activeChatID = chat.id;
    m_forwarding.loadAvailableChats();
}

void MessengerChatView::disappear() {
    std::optional<QString> &active = m_parts.notifications().activeChatID;
    // The screen that follows may have appeared already.
    if (active == chat.id)
        active = std::nullopt;
}

void MessengerChatView::loadMessages() {
    launch(establishSession(shared_from_this()));
    m_history.load();
    connect(&m_parts.socket, &MessengerWebSocket::events, this,
            [this](const WSEvent &event) { m_events.handle(event); });
}

void MessengerChatView::subscribeP2P() {
    connect(&m_parts.centre, &NotificationCentre::posted, this,
            [this](const QString &name, const QJsonObject &userInfo) {
                if (name == orvaneP2PMessage)
                    m_events.handleDirect(userInfo);
            });
}

QCoro::Task<void> MessengerChatView::establishSession(Self self) {
    const bool began = co_await self->m_cipher.establishSession(self->peerId());
    if (began)
        self->m_rows.readAgain();
}

void MessengerChatView::loadBotMeta() {
    if (chat.type != ChatType::direct || peerId().isEmpty())
        return;
    const auto peer = contacts.constFind(peerId());
    if (peer == contacts.constEnd() || !peer->isAI) {
        launch(findBot(shared_from_this()));
        return;
    }
    activeBotId = peer->id;
    activeBotName = peer->displayName;
}

QCoro::Task<void> MessengerChatView::findBot(Self self) {
    const std::optional<QList<QJsonObject>> found =
        co_await dropped(self->m_parts.api.searchUsers(self->peerId(), self->currentUserID),
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

void MessengerChatView::votePoll(const MessengerPoll &poll) {
    const int row = rowOfPoll(poll.id);
    if (row < 0)
        return;
    changeAt(row, [&](MessengerMessage &message) { message.poll = poll; });
    for (const PollOption &option : poll.options) {
        if (option.voters.contains(currentUserID))
            m_parts.socket.send({{u"type"_s, u"poll_vote"_s},
                                 {u"user_id"_s, currentUserID},
                                 {u"poll_id"_s, poll.id},
                                 {u"option_id"_s, option.id},
                                 {u"chat_id"_s, chat.id}});
    }
}

void MessengerChatView::editLastOwnMessage() {
    const auto &records = messages.records();
    const auto last =
        std::find_if(records.crbegin(), records.crend(), [this](const MessengerMessage &message) {
            return message.senderID == currentUserID && message.type == MessageType::text;
        });
    if (last != records.crend())
        m_actions.edit(*last);
}

void MessengerChatView::performDelete() {
    if (const auto &message = deletingMessage.value())
        m_actions.performDelete(*message);
    deletingMessage = std::nullopt;
}

void MessengerChatView::scrollToPinned() const {
    logLine(u"[Pin] scroll requested"_s);
}

void MessengerChatView::replyTo(const MessengerMessage &message) {
    replyToMessage = message;
    isInputFocused = true;
}

void MessengerChatView::closeContext() {
    chatContext = std::nullopt;
    unansweredQuestions = QStringList();
}

bool MessengerChatView::isPinned(const QString &messageID) const {
    return pinnedMessageIDs.value().contains(messageID);
}

QList<MessengerMessage> MessengerChatView::pinnedMessages() const {
    QList<MessengerMessage> pinned;
    std::copy_if(messages.records().cbegin(), messages.records().cend(), std::back_inserter(pinned),
                 [this](const MessengerMessage &message) { return isPinned(message.id); });
    return pinned;
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

QString MessengerChatView::senderName(const QString &userID) const {
    const auto sender = contacts.constFind(userID);
    return sender == contacts.constEnd() ? u"Someone"_s : sender->displayName;
}

QString MessengerChatView::nameInChat(const QString &userID) const {
    return userID == currentUserID ? u"You"_s : senderName(userID);
}

QString MessengerChatView::chatName(const MessengerChat &other) const {
    return other.visibleName(currentUserID, contacts);
}

QString MessengerChatView::hueIdOf(const MessengerChat &some) const {
    return some.hueId(currentUserID);
}

QStringList MessengerChatView::linksIn(const MessengerMessage &message) {
    QStringList addresses;
    for (const Link &link : Link::in(plainText(message.content).left(searchedLength)))
        addresses.append(link.address());
    addresses.removeDuplicates();
    return addresses.mid(0, mostLinks);
}

void MessengerChatView::setDeliveryStatus(const QString &messageID, DeliveryStatus status) {
    change(messageID, [status](MessengerMessage &message) { message.deliveryStatus = status; });
}

void MessengerChatView::removeAll(const QString &messageID) {
    for (int row = messages.count() - 1; row >= 0; --row) {
        if (messages.at(row).id == messageID)
            messages.removeAt(row);
    }
}

int MessengerChatView::rowOfPoll(const QString &pollID) const {
    const auto &records = messages.records();
    const auto carrier = std::find_if(records.cbegin(), records.cend(), [&](const MessengerMessage &message) {
        return message.poll && message.poll->id == pollID;
    });
    return carrier == records.cend() ? -1 : int(carrier - records.cbegin());
}

} // namespace orvane
