// SPDX-License-Identifier: MIT
#pragma once

#include "Base/RecordList.h"
#include "Model/MessengerChat.h"

#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace orvane {

/// All chats of the user, and as rows those of them that are shown, in order: pinned ones first, then the
/// later date, where a chat's date is that of its last message, else its own; equal dates as they came. A
/// change of one chat costs a few comparisons and moves one row, however many chats there are. Main thread.
class SortedChats : public RecordListModel {
public:
    using Filter = std::function<bool(const MessengerChat &)>;

    using RecordListModel::RecordListModel;

    // All chats, shown or not

    /// Takes over a whole list. Of two chats with one id the first counts. Pins stay.
    void assign(const QList<MessengerChat> &chats);
    /// As if it had come before all others.
    void insertFirst(const MessengerChat &chat);
    /// Puts the chat in the place of the one with its id.
    void replace(const MessengerChat &chat);
    void remove(const QString &id);

    /// Null for an id that no chat has. Good until the next change.
    const MessengerChat *find(const QString &id) const;
    /// The first chat, in the order in which they came, of which this holds; null when there is none.
    const MessengerChat *findFirst(const Filter &holds) const;
    qint64 unreadSum() const { return m_unreadSum; }

    bool isPinned(const QString &id) const;
    void setPinned(const QString &id, bool pinned);

    // The rows

    /// Shows the chats that pass; all of them without a filter. To be set again when what it looks at
    /// changes.
    void setFilter(Filter filter);

    const MessengerChat &at(int row) const;
    /// -1 for a chat that isn't shown.
    int rowOf(const QString &id) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    struct Entry {
        MessengerChat chat;
        /// Milliseconds since 1970.
        qint64 date = 0;
        /// Where it came; unique.
        qint64 place = 0;
        bool pinned = false;
        bool shown = false;
    };
    using Rows = std::vector<Entry *>;

    static bool standsBefore(const Entry *a, const Entry *b);
    bool passes(const Entry &entry) const { return !m_filter || m_filter(entry.chat); }
    int rowOf(const Entry &entry) const;
    Entry &add(const MessengerChat &chat, qint64 place);
    void settle(Entry &entry, int row);
    void show(Entry &entry);
    void hide(Entry &entry, int row);
    Rows sortedRows() const;
    void showRows(const Rows &rows);

    std::unordered_map<QString, std::unique_ptr<Entry>> m_entries;
    Rows m_rows;
    Filter m_filter;
    qint64 m_firstPlace = 0;
    qint64 m_unreadSum = 0;
};

} // namespace orvane
