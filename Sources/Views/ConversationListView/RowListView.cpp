#include "Views/ConversationListView/RowListView.h"

#include <QScrollBar>

#include <optional>

namespace orvia {

void RowListView::keepPlace()
{
    m_keptRows.clear();
    if (verticalScrollBar()->value() == 0)
        return;
    const auto [first, last] = visibleRows();
    for (int row = std::max(first, 0); row <= last; ++row)
        m_keptRows.push_back({model()->index(row, modelColumn(), rootIndex()), row});
}

void RowListView::restorePlace()
{
    // A row that got a message jumps; the others all shift alike, by how many came or went above them.
    std::optional<int> shift;
    for (const KeptRow& kept : m_keptRows) {
        if (!kept.index.isValid())
            continue;
        const int own = kept.index.row() - kept.row;
        if (!shift || std::abs(own) < std::abs(*shift))
            shift = own;
    }
    m_keptRows.clear();
    if (!shift || *shift == 0)
        return;
    updateGeometries();
    verticalScrollBar()->setValue(verticalScrollBar()->value() + *shift * rowHeight());
}

bool RowListView::viewportEvent(QEvent* event)
{
    const QModelIndex before = hoveredIndex();
    const bool handled = VirtualListView::viewportEvent(event);
    repaintHoverFrom(before);
    return handled;
}

void RowListView::scrollContentsBy(int dx, int dy)
{
    const QModelIndex before = hoveredIndex();
    VirtualListView::scrollContentsBy(dx, dy);
    repaintHoverFrom(before);
}

/// The row above a highlighted one paints its separator, or does not.
void RowListView::repaintHoverFrom(const QModelIndex& before)
{
    const QModelIndex after = hoveredIndex();
    if (after == before)
        return;
    for (const QModelIndex& index : {before, after}) {
        if (index.isValid())
            viewport()->update(visualRect(index).translated(0, -rowHeight()));
    }
}

void RowListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    VirtualListView::selectionChanged(selected, deselected);
    viewport()->update();
}

} // namespace orvia
