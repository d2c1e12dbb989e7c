// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractListModel>
#include <QList>

#include <algorithm>
#include <utility>

namespace orvane {

/// The part of RecordList that the meta-object compiler has to see.
class RecordListModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { RecordRole = Qt::UserRole };

    using QAbstractListModel::QAbstractListModel;

    int count() const { return rowCount(); }
    int rowCount(const QModelIndex &parent = {}) const override = 0;
    /// One role, `record`.
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();
};

/// A list of value records that have an `id`, told to views row by row. Main thread.
template <typename T>
class RecordList : public RecordListModel {
public:
    using RecordListModel::RecordListModel;

    const QList<T> &records() const { return m_records; }
    const T &at(int row) const { return m_records.at(row); }
    bool isEmpty() const { return m_records.isEmpty(); }

    /// The first row whose record has this id, or -1.
    int rowOf(const QString &id) const {
        const auto found = std::find_if(m_records.cbegin(), m_records.cend(),
                                        [&](const T &record) { return record.id == id; });
        return found == m_records.cend() ? -1 : int(found - m_records.cbegin());
    }

    void append(const T &record) { insert(int(m_records.size()), record); }

    void insert(int row, const T &record) {
        beginInsertRows({}, row, row);
        m_records.insert(row, record);
        endInsertRows();
        Q_EMIT countChanged();
    }

    void removeAt(int row) {
        beginRemoveRows({}, row, row);
        m_records.removeAt(row);
        endRemoveRows();
        Q_EMIT countChanged();
    }

    void replace(int row, const T &record) {
        if (m_records.at(row) == record)
            return;
        m_records[row] = record;
        Q_EMIT dataChanged(index(row), index(row));
    }

    /// Moves the record so that it stands at row `to` afterwards.
    void move(int from, int to) {
        if (from == to)
            return;
        beginMoveRows({}, from, from, {}, to > from ? to + 1 : to);
        m_records.move(from, to);
        endMoveRows();
    }

    /// Takes over a whole new list. Rows at both ends whose ids stay are kept and only told as changed where
    /// they differ; what lies between is removed and inserted.
    void assign(const QList<T> &next) {
        qsizetype head = 0;
        const qsizetype shorter = std::min(m_records.size(), next.size());
        while (head < shorter && m_records.at(head).id == next.at(head).id)
            ++head;
        qsizetype tail = 0;
        while (tail < shorter - head &&
               m_records.at(m_records.size() - 1 - tail).id == next.at(next.size() - 1 - tail).id)
            ++tail;
        const qsizetype sizeBefore = m_records.size();
        removeMiddle(head, m_records.size() - tail);
        insertMiddle(next, head, next.size() - tail);
        for (qsizetype row = 0; row < head; ++row)
            replace(int(row), next.at(row));
        for (qsizetype row = next.size() - tail; row < next.size(); ++row)
            replace(int(row), next.at(row));
        if (sizeBefore != m_records.size())
            Q_EMIT countChanged();
    }

    int rowCount(const QModelIndex &parent = {}) const override {
        return parent.isValid() ? 0 : int(m_records.size());
    }

    QVariant data(const QModelIndex &index, int role) const override {
        if (role != RecordRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
            return {};
        return QVariant::fromValue(m_records.at(index.row()));
    }

private:
    void removeMiddle(qsizetype from, qsizetype to) {
        if (from >= to)
            return;
        beginRemoveRows({}, int(from), int(to - 1));
        m_records.remove(from, to - from);
        endRemoveRows();
    }

    void insertMiddle(const QList<T> &next, qsizetype from, qsizetype to) {
        if (from >= to)
            return;
        beginInsertRows({}, int(from), int(to - 1));
        QList<T> joined;
        joined.reserve(m_records.size() + to - from);
        joined << m_records.mid(0, from) << next.mid(from, to - from) << m_records.mid(from);
        m_records.swap(joined);
        endInsertRows();
    }

    QList<T> m_records;
};

} // namespace orvane
