// SPDX-License-Identifier: MIT
#include "ChatList/Chats/SortedChats.h"

#include <algorithm>

namespace orvane {

namespace {

qint64 dateOf(const MessengerChat &chat) {
    return (chat.lastMessage ? chat.lastMessage->timestamp : chat.updatedAt).toMSecsSinceEpoch();
}

/// So that no list of chats has a sum that doesn't fit, whatever its server says.
qint64 countOf(const MessengerChat &chat) {
    constexpr qint64 most = 1'000'000'000'000;
    return std::clamp(chat.unreadCount, -most, most);
}

} // namespace

bool SortedChats::standsBefore(const Entry *a, const Entry *b) {
    if (a->pinned != b->pinned)
        return a->pinned;
    return a->date == b->date ? a->place < b->place : a->date > b->date;
}

void SortedChats::assign(const QList<MessengerChat> &chats) {
    beginResetModel();
    const auto before = std::move(m_entries);
    m_entries.clear();
    m_rows.clear();
    m_firstPlace = 0;
    m_unreadSum = 0;
    qint64 place = 0;
    for (const MessengerChat &chat : chats) {
        if (m_entries.contains(chat.id))
            continue;
        Entry &entry = add(chat, place++);
        const auto old = before.find(chat.id);
        entry.pinned = old != before.end() && old->second->pinned;
        entry.shown = passes(entry);
    }
    m_rows = sortedRows();
    endResetModel();
    Q_EMIT countChanged();
}

void SortedChats::insertFirst(const MessengerChat &chat) {
    if (find(chat.id)) {
        replace(chat);
        return;
    }
    Entry &entry = add(chat, --m_firstPlace);
    if (passes(entry))
        show(entry);
}

void SortedChats::replace(const MessengerChat &chat) {
    const auto found = m_entries.find(chat.id);
    if (found == m_entries.end() || found->second->chat == chat)
        return;
    Entry &entry = *found->second;
    const int row = entry.shown ? rowOf(entry) : -1;
    m_unreadSum += countOf(chat) - countOf(entry.chat);
    entry.chat = chat;
    entry.date = dateOf(chat);
    if (!entry.shown && passes(entry))
        show(entry);
    else if (entry.shown && !passes(entry))
        hide(entry, row);
    else if (entry.shown)
        settle(entry, row);
}

void SortedChats::remove(const QString &id) {
    const auto found = m_entries.find(id);
    if (found == m_entries.end())
        return;
    Entry &entry = *found->second;
    if (entry.shown)
        hide(entry, rowOf(entry));
    m_unreadSum -= countOf(entry.chat);
    m_entries.erase(found);
}

const MessengerChat *SortedChats::find(const QString &id) const {
    const auto found = m_entries.find(id);
    return found == m_entries.end() ? nullptr : &found->second->chat;
}

const MessengerChat *SortedChats::findFirst(const Filter &holds) const {
    const Entry *first = nullptr;
    for (const auto &[id, entry] : m_entries) {
        if ((!first || entry->place < first->place) && holds(entry->chat))
            first = entry.get();
    }
    return first ? &first->chat : nullptr;
}

bool SortedChats::isPinned(const QString &id) const {
    const auto found = m_entries.find(id);
    return found != m_entries.end() && found->second->pinned;
}

void SortedChats::setPinned(const QString &id, bool pinned) {
    const auto found = m_entries.find(id);
    if (found == m_entries.end() || found->second->pinned == pinned)
        return;
    Entry &entry = *found->second;
    const int row = entry.shown ? rowOf(entry) : -1;
    entry.pinned = pinned;
    if (entry.shown)
        settle(entry, row);
}

void SortedChats::setFilter(Filter filter) {
    m_filter = std::move(filter);
    for (const auto &[id, entry] : m_entries)
        entry->shown = passes(*entry);
    showRows(sortedRows());
}

const MessengerChat &SortedChats::at(int row) const {
    return m_rows.at(size_t(row))->chat;
}

int SortedChats::rowOf(const QString &id) const {
    const auto found = m_entries.find(id);
    return found == m_entries.end() || !found->second->shown ? -1 : rowOf(*found->second);
}

int SortedChats::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant SortedChats::data(const QModelIndex &index, int role) const {
    if (role != RecordRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    return QVariant::fromValue(at(index.row()));
}

int SortedChats::rowOf(const Entry &entry) const {
    return int(std::lower_bound(m_rows.begin(), m_rows.end(), &entry, standsBefore) - m_rows.begin());
}

SortedChats::Entry &SortedChats::add(const MessengerChat &chat, qint64 place) {
    auto entry = std::make_unique<Entry>();
    entry->chat = chat;
    entry->date = dateOf(chat);
    entry->place = place;
    m_unreadSum += countOf(chat);
    return *(m_entries[chat.id] = std::move(entry));
}

// Everything but the entry at `row` is in order.
void SortedChats::settle(Entry &entry, int row) {
    const auto first = m_rows.begin();
    const auto self = first + row;
    auto target = std::lower_bound(first, self, &entry, standsBefore);
    if (target == self)
        target = std::lower_bound(self + 1, m_rows.end(), &entry, standsBefore);
    const int to = int(target - first);
    if (to < row) {
        beginMoveRows({}, row, row, {}, to);
        std::rotate(target, self, self + 1);
        endMoveRows();
    } else if (to > row + 1) {
        beginMoveRows({}, row, row, {}, to);
        std::rotate(self, self + 1, target);
        endMoveRows();
    }
    const QModelIndex changed = index(to > row ? to - 1 : to);
    Q_EMIT dataChanged(changed, changed);
}

void SortedChats::show(Entry &entry) {
    const int row = rowOf(entry);
    beginInsertRows({}, row, row);
    entry.shown = true;
    m_rows.insert(m_rows.begin() + row, &entry);
    endInsertRows();
    Q_EMIT countChanged();
}

void SortedChats::hide(Entry &entry, int row) {
    beginRemoveRows({}, row, row);
    entry.shown = false;
    m_rows.erase(m_rows.begin() + row);
    endRemoveRows();
    Q_EMIT countChanged();
}

SortedChats::Rows SortedChats::sortedRows() const {
    Rows rows;
    rows.reserve(m_entries.size());
    for (const auto &[id, entry] : m_entries) {
        if (entry->shown)
            rows.push_back(entry.get());
    }
    std::sort(rows.begin(), rows.end(), standsBefore);
    return rows;
}

void SortedChats::showRows(const Rows &rows) {
    if (rows == m_rows)
        return;
    beginResetModel();
    m_rows = rows;
    endResetModel();
    Q_EMIT countChanged();
}

} // namespace orvane
