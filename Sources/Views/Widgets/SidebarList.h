#pragma once

#include "Views/Widgets/VirtualListView.h"

#include <vector>

namespace orvia {

class SidebarModel;

/// A short list of filters, one of them chosen, as high as its rows. Arrow keys choose like a click.
class SidebarList : public VirtualListView {
    Q_OBJECT

public:
    struct Row {
        QString iconName;
        QString label;

        friend bool operator==(const Row&, const Row&) = default;
    };

    explicit SidebarList(const QString& accessibleName, QWidget* parent = nullptr);

    void setRows(std::vector<Row> rows);
    /// Marks a row as chosen without telling; -1 marks none.
    void selectRow(int row);
    int selectedRow() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    /// While the list has the focus, what is scrolled is the area around it.
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;

Q_SIGNALS:
    /// The user chose another row.
    void rowChosen(int row);

protected:
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void applyTheme();

    SidebarModel* m_rows;
    bool m_telling = true;
};

} // namespace orvia
