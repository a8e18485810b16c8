#include "Views/Widgets/VirtualListView.h"

#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/ListAccessibility.h"
#include "Views/Widgets/ScrollArea.h"

#include <QAccessible>
#include <QFocusEvent>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

namespace orvia {

VirtualListView::VirtualListView(QWidget* parent)
    : QListView(parent)
{
    installListAccessibility();
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setUniformItemSizes(true);
    setTabKeyNavigation(false);
    viewport()->setAttribute(Qt::WA_Hover);
    OverlayScrollBar::install(this);
}

void VirtualListView::setRowHeight(int height)
{
    m_rowHeight = std::max(1, height);
    doItemsLayout();
}

void VirtualListView::setVerticalPadding(int top, int bottom)
{
    m_topPadding = top;
    m_bottomPadding = bottom;
    doItemsLayout();
}

int VirtualListView::rowCount() const
{
    return model() ? model()->rowCount(rootIndex()) : 0;
}

int VirtualListView::rowTop(int row) const
{
    return m_topPadding + row * m_rowHeight - verticalOffset();
}

int VirtualListView::verticalOffset() const
{
    return verticalScrollBar()->value();
}

std::pair<int, int> VirtualListView::visibleRows() const
{
    const int rows = rowCount();
    const int offset = verticalOffset() - m_topPadding;
    const int first = std::max(0, offset / m_rowHeight);
    const int last = std::min(rows - 1, (offset + viewport()->height() - 1) / m_rowHeight);
    return first <= last ? std::pair(first, last) : std::pair(-1, -1);
}

QRect VirtualListView::visualRect(const QModelIndex& index) const
{
    if (!index.isValid() || index.parent() != rootIndex() || index.column() != modelColumn())
        return {};
    return {0, rowTop(index.row()), viewport()->width(), m_rowHeight};
}

QModelIndex VirtualListView::indexAt(const QPoint& point) const
{
    const int y = point.y() + verticalOffset() - m_topPadding;
    if (y < 0 || point.x() < 0 || point.x() >= viewport()->width())
        return {};
    const int row = y / m_rowHeight;
    return row < rowCount() ? model()->index(row, modelColumn(), rootIndex()) : QModelIndex();
}

void VirtualListView::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    if (!index.isValid() || index.parent() != rootIndex())
        return;
    const int top = m_topPadding + index.row() * m_rowHeight;
    const int height = viewport()->height();
    const int current = verticalOffset();
    int wanted = current;
    switch (hint) {
    case PositionAtTop:
        wanted = top;
        break;
    case PositionAtBottom:
        wanted = top + m_rowHeight - height;
        break;
    case PositionAtCenter:
        wanted = top + (m_rowHeight - height) / 2;
        break;
    case EnsureVisible:
        if (top < current)
            wanted = index.row() == 0 ? 0 : top;
        else if (top + m_rowHeight > current + height)
            wanted = top + m_rowHeight - height;
        break;
    }
    verticalScrollBar()->setValue(wanted);
}

void VirtualListView::doItemsLayout()
{
    // Positions follow from the row's number; there is nothing to lay out, and nothing to remember.
    updateGeometries();
    viewport()->update();
}

void VirtualListView::reset()
{
    QAbstractItemView::reset();
    updateGeometries();
    forgetGoneRows(*this);
}

void VirtualListView::setRootIndex(const QModelIndex& index)
{
    QAbstractItemView::setRootIndex(index);
    updateGeometries();
}

QModelIndex VirtualListView::moveCursor(CursorAction action, Qt::KeyboardModifiers)
{
    const int rows = rowCount();
    if (rows == 0)
        return {};
    const QModelIndex current = currentIndex();
    const int page = std::max(1, viewport()->height() / m_rowHeight - 1);
    int row = current.isValid() ? current.row() : -1;
    switch (action) {
    case MoveHome:
        row = 0;
        break;
    case MoveEnd:
        row = rows - 1;
        break;
    case MoveUp:
    case MoveLeft:
    case MovePrevious:
        row = row < 0 ? 0 : row - 1;
        break;
    case MoveDown:
    case MoveRight:
    case MoveNext:
        row += 1;
        break;
    case MovePageUp:
        row -= page;
        break;
    case MovePageDown:
        row += page;
        break;
    }
    return model()->index(std::clamp(row, 0, rows - 1), modelColumn(), rootIndex());
}

void VirtualListView::setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command)
{
    const int rows = rowCount();
    const QRect area = rect.normalized().translated(0, verticalOffset() - m_topPadding);
    if (rows == 0 || area.bottom() < 0 || area.top() / m_rowHeight >= rows) {
        selectionModel()->select(QItemSelection(), command);
        return;
    }
    const int first = std::max(0, area.top() / m_rowHeight);
    const int last = std::min(rows - 1, area.bottom() / m_rowHeight);
    const QItemSelection range(model()->index(first, modelColumn(), rootIndex()),
                               model()->index(last, modelColumn(), rootIndex()));
    selectionModel()->select(range, command);
}

QRegion VirtualListView::visualRegionForSelection(const QItemSelection& selection) const
{
    QRegion region;
    for (const QItemSelectionRange& range : selection) {
        const QRect rows(0, rowTop(range.top()), viewport()->width(), range.height() * m_rowHeight);
        region += rows.intersected(viewport()->rect());
    }
    return region;
}

QModelIndexList VirtualListView::selectedIndexes() const
{
    return selectionModel() ? selectionModel()->selectedIndexes() : QModelIndexList();
}

void VirtualListView::rowsInserted(const QModelIndex& parent, int start, int end)
{
    // The base class of QListView: the latter would forget and lay out every row.
    QAbstractItemView::rowsInserted(parent, start, end);
    scheduleDelayedItemsLayout();
}

void VirtualListView::rowsAboutToBeRemoved(const QModelIndex& parent, int start, int end)
{
    QAbstractItemView::rowsAboutToBeRemoved(parent, start, end);
    scheduleDelayedItemsLayout();
    if (!m_forgetting && QAccessible::isActive()) {
        m_forgetting = true;
        QMetaObject::invokeMethod(
            this,
            [this] {
                m_forgetting = false;
                forgetGoneRows(*this);
            },
            Qt::QueuedConnection);
    }
}

void VirtualListView::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                  const QList<int>& roles)
{
    QAbstractItemView::dataChanged(topLeft, bottomRight, roles);
}

void VirtualListView::updateGeometries()
{
    const int height = viewport()->height();
    const int contents = m_topPadding + rowCount() * m_rowHeight + m_bottomPadding;
    verticalScrollBar()->setSingleStep(m_rowHeight);
    verticalScrollBar()->setPageStep(height);
    verticalScrollBar()->setRange(0, std::max(0, contents - height));
    horizontalScrollBar()->setRange(0, 0);
    QAbstractItemView::updateGeometries();
}

void VirtualListView::scrollContentsBy(int dx, int dy)
{
    scrollDirtyRegion(dx, dy);
    viewport()->scroll(dx, dy);
    if (viewport()->underMouse())
        setHovered(indexAt(viewport()->mapFromGlobal(QCursor::pos())));
}

bool VirtualListView::viewportEvent(QEvent* event)
{
    switch (event->type()) {
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
        setHovered(indexAt(static_cast<QHoverEvent*>(event)->position().toPoint()));
        break;
    case QEvent::HoverLeave:
    case QEvent::Leave:
        setHovered({});
        break;
    default:
        break;
    }
    return QListView::viewportEvent(event);
}

void VirtualListView::setHovered(const QModelIndex& index)
{
    if (index == m_hovered)
        return;
    viewport()->update(visualRect(m_hovered));
    m_hovered = index;
    viewport()->update(visualRect(m_hovered));
}

void VirtualListView::resizeEvent(QResizeEvent* event)
{
    QAbstractItemView::resizeEvent(event);
    updateGeometries();
}

QStyleOptionViewItem VirtualListView::rowOption(const QModelIndex& index) const
{
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = visualRect(index);
    option.index = index;
    option.state.setFlag(QStyle::State_Selected, selectionModel() && selectionModel()->isSelected(index));
    option.state.setFlag(QStyle::State_MouseOver, index == m_hovered);
    option.state.setFlag(QStyle::State_HasFocus, m_showsFocus && hasFocus() && index == currentIndex());
    option.state.setFlag(QStyle::State_Enabled, isEnabled() && index.flags().testFlag(Qt::ItemIsEnabled));
    return option;
}

void VirtualListView::paintEvent(QPaintEvent* event)
{
    const auto [firstVisible, lastVisible] = visibleRows();
    if (firstVisible < 0)
        return;
    QPainter painter(viewport());
    const QRegion region = event->region();
    // A list inside a larger scrolling area is as high as its rows; only a part of it is seen.
    const int top = rowTop(0);
    const QRect dirty = region.boundingRect();
    const int first = std::max(firstVisible, (dirty.top() - top) / m_rowHeight);
    const int last = std::min(lastVisible, (dirty.bottom() - top) / m_rowHeight);
    for (int row = first; row <= last; ++row) {
        const QModelIndex index = model()->index(row, modelColumn(), rootIndex());
        const QStyleOptionViewItem option = rowOption(index);
        if (region.intersects(option.rect)) {
            painter.save();
            // The marks that somebody piled up on a letter must not reach the rows around.
            painter.setClipRect(option.rect);
            itemDelegateForIndex(index)->paint(&painter, option, index);
            painter.restore();
        }
    }
}

void VirtualListView::keyPressEvent(QKeyEvent* event)
{
    const QModelIndex before = currentIndex();
    const bool activates = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (activates && before.isValid()) {
        Q_EMIT activated(before);
        event->accept();
        return;
    }
    QListView::keyPressEvent(event);
    if (currentIndex() != before || event->key() == Qt::Key_Space) {
        m_showsFocus = true;
        viewport()->update(visualRect(before));
        viewport()->update(visualRect(currentIndex()));
    }
}

void VirtualListView::focusInEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::ActiveWindowFocusReason && event->reason() != Qt::PopupFocusReason)
        m_showsFocus = FocusRing::showsFor(event->reason());
    // Without a current row the ring would have no place; QAbstractItemView makes the first row current, and
    // that must not select it.
    if (!currentIndex().isValid() && rowCount() > 0 && FocusRing::showsFor(event->reason()))
        selectionModel()->setCurrentIndex(model()->index(0, modelColumn(), rootIndex()),
                                          QItemSelectionModel::NoUpdate);
    QListView::focusInEvent(event);
    viewport()->update(visualRect(currentIndex()));
    // Qt tells of the list's own focus after this; what has it is the row.
    QMetaObject::invokeMethod(
        this, [this] { tellFocusedRow(*this); }, Qt::QueuedConnection);
}

void VirtualListView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QAbstractItemView::currentChanged(current, previous);
    tellFocusedRow(*this);
}

void VirtualListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QAbstractItemView::selectionChanged(selected, deselected);
    tellChosenRows(*this, selected, deselected);
}

void VirtualListView::focusOutEvent(QFocusEvent* event)
{
    QListView::focusOutEvent(event);
    viewport()->update(visualRect(currentIndex()));
}

void VirtualListView::mousePressEvent(QMouseEvent* event)
{
    m_showsFocus = false;
    QListView::mousePressEvent(event);
}

} // namespace orvia
