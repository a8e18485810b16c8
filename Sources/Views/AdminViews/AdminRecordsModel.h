#pragma once

#include "Views/AdminViews/AdminRow.h"

#include <QAbstractListModel>

#include <functional>
#include <vector>

namespace orvia {

/// The rows of an administration list as its delegate and its view know them, whatever the records are.
class AdminRowsModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { idRole = Qt::UserRole };

    using QAbstractListModel::QAbstractListModel;

    virtual AdminRow row(int row) const = 0;
    virtual QString id(int row) const = 0;

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!index.isValid() || index.row() >= rowCount())
            return {};
        switch (role) {
        case Qt::DisplayRole:
            return row(index.row()).title;
        case Qt::AccessibleTextRole:
            return row(index.row()).accessibleText();
        case idRole:
            return id(index.row());
        default:
            return {};
        }
    }
};

/// The records of an administration list in the order received.
template <class Record>
class AdminRecordsModel : public AdminRowsModel {
public:
    using Present = std::function<AdminRow(const Record&)>;

    /// @p present makes a record's row; it is asked whenever the row is painted.
    AdminRecordsModel(Present present, QObject* parent)
        : AdminRowsModel(parent)
        , m_present(std::move(present))
    {
    }

    const std::vector<Record>& records() const { return m_records; }
    const Record& record(int row) const { return m_records[static_cast<std::size_t>(row)]; }

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_records.size());
    }
    AdminRow row(int row) const override { return m_present(record(row)); }
    QString id(int row) const override { return record(row).id; }

    void replace(std::vector<Record> records)
    {
        beginResetModel();
        m_records = std::move(records);
        endResetModel();
    }

    /// Removes the rows at @p positions, which ascend.
    void remove(const std::vector<int>& positions)
    {
        // From the end, in runs, so that the positions before stay right and a long selection is few changes.
        for (std::size_t end = positions.size(); end > 0;) {
            std::size_t begin = end - 1;
            while (begin > 0 && positions[begin - 1] + 1 == positions[begin])
                --begin;
            beginRemoveRows({}, positions[begin], positions[end - 1]);
            m_records.erase(m_records.begin() + positions[begin], m_records.begin() + positions[end - 1] + 1);
            endRemoveRows();
            end = begin;
        }
    }

    /// What the rows show changed without their records.
    void refresh()
    {
        if (!m_records.empty())
            Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    }

private:
    std::vector<Record> m_records;
    Present m_present;
};

} // namespace orvia
