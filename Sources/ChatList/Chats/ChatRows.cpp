// SPDX-License-Identifier: MIT
#include "ChatList/Chats/ChatRows.h"

#include "Interface/DisplayTimes.h"
#include "Model/Words.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orvane {

namespace {

QString preview(const MessengerChat &chat) {
    return chat.lastMessage ? asOneLine(chat.lastMessage->content) : QString();
}

} // namespace

void ChatRows::contactsChanged() {
    if (const int rows = rowCount(); rows > 0)
        Q_EMIT dataChanged(index(0), index(rows - 1), {NameRole, OnlineRole, SpokenRole});
}

QString ChatRows::displayName(const MessengerChat &chat) const {
    return chat.displayName(m_session.userIdText(), m_contacts);
}

QHash<int, QByteArray> ChatRows::roleNames() const {
    return {{ChatIDRole, "chatID"},   {SymbolRole, "symbol"}, {NameRole, "name"},
            {PreviewRole, "preview"}, {TimeRole, "time"},     {UnreadCountRole, "unreadCount"},
            {PinnedRole, "pinned"},   {HueIDRole, "hueID"},   {OnlineRole, "online"},
            {SpokenRole, "spoken"}};
}

QVariant ChatRows::data(const QModelIndex &index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const MessengerChat &chat = at(index.row());
    switch (role) {
    case ChatIDRole:
        return chat.id;
    case SymbolRole:
        return chat.symbol();
    case NameRole:
        return asOneLine(visibleName(chat));
    case PreviewRole:
        return preview(chat);
    case TimeRole:
        return chat.lastMessage ? DisplayTimes::brief(chat.lastMessage->timestamp) : QString();
    case UnreadCountRole:
        // No badge says more.
        return int(std::clamp<qint64>(chat.unreadCount, 0, 100));
    case PinnedRole:
        return isPinned(chat.id);
    case HueIDRole:
        return chat.hueId(m_session.userIdText());
    case OnlineRole:
        return isOnline(chat);
    case SpokenRole:
        return spoken(chat);
    default:
        return {};
    }
}

QString ChatRows::visibleName(const MessengerChat &chat) const {
    return chat.visibleName(m_session.userIdText(), m_contacts);
}

bool ChatRows::isOnline(const MessengerChat &chat) const {
    if (chat.type != ChatType::direct)
        return false;
    const auto peer = m_contacts.constFind(chat.peerId(m_session.userIdText()));
    return peer != m_contacts.constEnd() && peer->status == UserStatus::online;
}

QString ChatRows::spoken(const MessengerChat &chat) const {
    QStringList words{asOneLine(visibleName(chat))};
    if (chat.lastMessage)
        words << preview(chat);
    if (chat.unreadCount > 0)
        words << u"%1 unread"_s.arg(chat.unreadCount);
    return words.join(u", "_s);
}

} // namespace orvane
