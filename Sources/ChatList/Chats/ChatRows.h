// SPDX-License-Identifier: MIT
#pragma once

#include "ChatList/Chats/SortedChats.h"
#include "Session/MessengerSession.h"

namespace orvane {

/// The chats as their rows read, in roles of plain values: while the list scrolls, a row takes these over as
/// they are. Names and presence come from `contacts`. Main thread.
class ChatRows : public SortedChats {
public:
    enum Role {
        ChatIDRole = Qt::UserRole,
        /// In place of a person's initial; empty for a person.
        SymbolRole,
        /// In one line, no longer than a row can show; so is the last message, which is empty without one.
        NameRole,
        PreviewRole,
        /// Of the last message; empty without one.
        TimeRole,
        UnreadCountRole,
        PinnedRole,
        /// Decides the avatar's hue.
        HueIDRole,
        OnlineRole,
        /// The row in words for assistive technology: name, preview, unread count.
        SpokenRole,
    };

    /// Both outlive the rows.
    ChatRows(const MessengerSession &session, const Contacts &contacts)
        : m_session(session)
        , m_contacts(contacts) {}

    /// What is shown of people has to be looked up again.
    void contactsChanged();

    QString displayName(const MessengerChat &chat) const;

    QHash<int, QByteArray> roleNames() const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    QString visibleName(const MessengerChat &chat) const;
    bool isOnline(const MessengerChat &chat) const;
    QString spoken(const MessengerChat &chat) const;

    const MessengerSession &m_session;
    const Contacts &m_contacts;
};

} // namespace orvane
