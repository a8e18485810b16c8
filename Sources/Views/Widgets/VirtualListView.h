#pragma once

#include <QListView>

namespace orvia {

/// A list of rows of one height that are painted by the view's delegate. Only what is visible is ever asked
/// for: showing, scrolling, and a change of the model cost the same with ten rows and with a hundred
/// thousand.
///
/// Selection, keyboard and assistive tools work as in any list view; give the model @c Qt::AccessibleTextRole
/// so that rows have a name. The delegate paints @c State_Selected, @c State_MouseOver and, for the row that
/// shows the keyboard's focus, @c State_HasFocus (see @c FocusRing::paintInside). Its size hints are not
/// asked for.
class VirtualListView : public QListView {
    Q_OBJECT

public:
    explicit VirtualListView(QWidget* parent = nullptr);

    /// Height of every row in pixels, at least 1.
    void setRowHeight(int height);
    int rowHeight() const { return m_rowHeight; }
    /// Empty space above the first and below the last row.
    void setVerticalPadding(int top, int bottom);
    /// The row under the pointer, invalid when there is none.
    QModelIndex hoveredIndex() const { return m_hovered; }
    /// The first and the last visible row; both -1 when there is none.
    std::pair<int, int> visibleRows() const;

    QRect visualRect(const QModelIndex& index) const override;
    QModelIndex indexAt(const QPoint& point) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    void doItemsLayout() override;
    void reset() override;
    void setRootIndex(const QModelIndex& index) override;

protected:
    int horizontalOffset() const override { return 0; }
    int verticalOffset() const override;
    bool isIndexHidden(const QModelIndex&) const override { return false; }
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
    QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    QModelIndexList selectedIndexes() const override;
    void rowsInserted(const QModelIndex& parent, int start, int end) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    int rowCount() const;
    int rowTop(int row) const;
    void setHovered(const QModelIndex& index);
    QStyleOptionViewItem rowOption(const QModelIndex& index) const;

    int m_rowHeight = 28;
    int m_topPadding = 0;
    int m_bottomPadding = 0;
    QPersistentModelIndex m_hovered;
    bool m_showsFocus = false;
    bool m_forgetting = false; // rows that are gone, as soon as they are
};

} // namespace orvia
