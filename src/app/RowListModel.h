#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QSet>

#include <type_traits>
#include <utility>

namespace kestrune {

// A list model over plain row values with a key() and ==. setRows() moves to a new list by announcing the
// rows removed, inserted and changed, so views keep their state and only touched rows are redrawn. A list
// with nothing in common with the current one (a new database) is a reset.
template <typename Row> class RowListModel : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : int(m_rows.size());
    }

    [[nodiscard]] const QList<Row> &rows() const { return m_rows; }

    void setRows(QList<Row> next)
    {
        if (!shareOrderedKeys(next)) {
            beginResetModel();
            m_rows = std::move(next);
            endResetModel();
            return;
        }
        removeRowsMissingFrom(next);
        insertRowsNewIn(next);
        updateChangedRows(next);
    }

    // Replaces one row in place; for changes that cannot move rows, such as a tick.
    void updateRow(qsizetype index, Row row)
    {
        if (index < 0 || index >= m_rows.size() || m_rows[index] == row)
            return;
        m_rows[index] = std::move(row);
        Q_EMIT dataChanged(this->index(int(index)), this->index(int(index)));
    }

protected:
    [[nodiscard]] const Row &rowAt(const QModelIndex &index) const { return m_rows.at(index.row()); }
    [[nodiscard]] bool isValidRow(const QModelIndex &index) const
    {
        return index.isValid() && !index.parent().isValid() && index.row() < m_rows.size();
    }

private:
    using Key = std::decay_t<decltype(std::declval<const Row &>().key())>;

    static QSet<Key> keysOf(const QList<Row> &rows)
    {
        QSet<Key> keys;
        keys.reserve(rows.size());
        for (const Row &row : rows)
            keys.insert(row.key());
        return keys;
    }

    // Whether the rows both lists hold stand in the same order in each. With no common row at all the
    // lists are unrelated, and a reset says so best; an empty side is a plain insertion or removal.
    bool shareOrderedKeys(const QList<Row> &next) const
    {
        if (m_rows.isEmpty() || next.isEmpty())
            return true;
        const QSet<Key> nextKeys = keysOf(next);
        QList<Key> common;
        for (const Row &row : m_rows) {
            if (nextKeys.contains(row.key()))
                common.append(row.key());
        }
        if (common.isEmpty())
            return false;
        qsizetype matched = 0;
        for (const Row &row : next) {
            if (matched < common.size() && row.key() == common[matched])
                ++matched;
        }
        return matched == common.size();
    }

    void removeRowsMissingFrom(const QList<Row> &next)
    {
        const QSet<Key> nextKeys = keysOf(next);
        for (qsizetype end = m_rows.size(); end > 0;) {
            if (nextKeys.contains(m_rows[end - 1].key())) {
                --end;
                continue;
            }
            qsizetype begin = end - 1;
            while (begin > 0 && !nextKeys.contains(m_rows[begin - 1].key()))
                --begin;
            beginRemoveRows(QModelIndex(), int(begin), int(end - 1));
            m_rows.remove(begin, end - begin);
            endRemoveRows();
            end = begin;
        }
    }

    // The remaining rows are now a subsequence of `next`: insert each run of new rows before the first
    // remaining row that follows it.
    void insertRowsNewIn(const QList<Row> &next)
    {
        for (qsizetype at = 0; at < next.size(); ++at) {
            const bool hasRowHere = at < m_rows.size();
            if (hasRowHere && m_rows[at].key() == next[at].key())
                continue;
            qsizetype end = at;
            while (end < next.size() && (!hasRowHere || next[end].key() != m_rows[at].key()))
                ++end;
            beginInsertRows(QModelIndex(), int(at), int(end - 1));
            for (qsizetype i = at; i < end; ++i)
                m_rows.insert(i, next[i]);
            endInsertRows();
            at = end - 1;
        }
    }

    void updateChangedRows(const QList<Row> &next)
    {
        for (qsizetype at = 0; at < next.size(); ++at)
            updateRow(at, next[at]);
    }

    QList<Row> m_rows;
};

} // namespace kestrune
