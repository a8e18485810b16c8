#pragma once

#include "Views/Widgets/VirtualListView.h"

#include <QSet>
#include <QStringList>
#include <QTimer>

namespace orvia {

struct AdminRow;
class AdminRowsModel;

/// The list of an administration screen: rows on one rounded card, which scrolls with them. A click on a row
/// or Return is told as usual, by @c clicked and @c activated.
class AdminListView : public VirtualListView {
    Q_OBJECT

public:
    /// @p leastRowHeight in pixels; the type size may ask for more. @p trailing pixels at the trailing edge
    /// of every row stay free for controls.
    AdminListView(const QString& name, AdminRowsModel& rows, int leastRowHeight, bool hasTags, int trailing,
                  QWidget* parent);

    const AdminRowsModel& rows() const { return m_rows; }
    int trailing() const { return m_trailing; }
    /// The part of a row on the card, without the row's paddings.
    static QRect contentArea(const QRect& row);
    /// The part of a row inside the card's outline.
    static QRect cardArea(const QRect& row);

    /// Whether the pointer is over the row or over a control that lies on it.
    bool isUnderPointer(const QModelIndex& index) const;
    /// The control that lies on this row has the pointer; an invalid index for none.
    void setControlUnderPointer(const QModelIndex& index);
    /// The selected rows, ascending; without any the current one.
    std::vector<int> chosenRows() const;

    /// The current and the selected rows by their records' ids, to be found again in a new list.
    struct Place {
        QString current;
        QSet<QString> selected;
    };
    Place place() const;
    void restore(const Place& place);

Q_SIGNALS:
    /// Rows came into sight or went, or are hovered, current, selected or focused otherwise than before.
    void rowsShown();
    void deleteRequested();
    /// A menu for the chosen rows is wanted at @p position on the screen.
    void menuRequested(const QPoint& position);

protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void applyTheme();

    AdminRowsModel& m_rows;
    int m_leastRowHeight;
    bool m_hasTags;
    int m_trailing;
    QPersistentModelIndex m_controlUnderPointer;
    QTimer m_rowsShown;
};

} // namespace orvia
