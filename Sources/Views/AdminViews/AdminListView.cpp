#include "Views/AdminViews/AdminListView.h"

#include "Theme/Theme.h"
#include "Views/AdminViews/AdminRecordsModel.h"
#include "Views/AdminViews/AdminRowDelegate.h"
#include "Views/Widgets/PaintShapes.h"
#include "Views/Widgets/Sheet.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace orvia {

namespace {

constexpr int outline = 1;
constexpr int rowPadding = Spacing::medium;

} // namespace

AdminListView::AdminListView(const QString& name, AdminRowsModel& rows, int leastRowHeight, bool hasTags,
                             int trailing, QWidget* parent)
    : VirtualListView(parent)
    , m_rows(rows)
    , m_leastRowHeight(leastRowHeight)
    , m_hasTags(hasTags)
    , m_trailing(trailing)
{
    setAccessibleName(name);
    setSelectionMode(QAbstractItemView::NoSelection);
    viewport()->setAutoFillBackground(false);
    setVerticalPadding(Sheet::bodyPadding.top() + outline, Sheet::bodyPadding.bottom() + outline);
    // Several reasons to look at the rows anew in one turn of the event loop are one.
    m_rowsShown.setSingleShot(true);
    connect(&m_rowsShown, &QTimer::timeout, this, &AdminListView::rowsShown);
    setItemDelegate(new AdminRowDelegate(*this));
    setModel(&rows);
    applyTheme();
    connect(&Theme::shared(), &Theme::changed, this, &AdminListView::applyTheme);
}

void AdminListView::applyTheme()
{
    setRowHeight(AdminRowGeometry::rowHeight(m_leastRowHeight, m_hasTags));
}

QRect AdminListView::cardArea(const QRect& row)
{
    return row.adjusted(Sheet::bodyPadding.left() + outline, 0, -Sheet::bodyPadding.right() - outline, 0);
}

QRect AdminListView::contentArea(const QRect& row)
{
    return cardArea(row).adjusted(rowPadding, 0, -rowPadding, 0);
}

bool AdminListView::isUnderPointer(const QModelIndex& index) const
{
    return index.isValid() && (index == hoveredIndex() || index == m_controlUnderPointer);
}

void AdminListView::setControlUnderPointer(const QModelIndex& index)
{
    viewport()->update(visualRect(m_controlUnderPointer));
    m_controlUnderPointer = index;
    viewport()->update(visualRect(m_controlUnderPointer));
    m_rowsShown.start(0);
}

std::vector<int> AdminListView::chosenRows() const
{
    std::vector<int> chosen;
    for (const QModelIndex& index : selectedIndexes())
        chosen.push_back(index.row());
    if (chosen.empty() && currentIndex().isValid())
        chosen.push_back(currentIndex().row());
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

AdminListView::Place AdminListView::place() const
{
    Place place{currentIndex().data(AdminRowsModel::idRole).toString(), {}};
    for (const QModelIndex& index : selectedIndexes())
        place.selected.insert(m_rows.id(index.row()));
    return place;
}

void AdminListView::restore(const Place& place)
{
    QItemSelection selection;
    QModelIndex current;
    for (int row = 0; row < m_rows.rowCount(); ++row) {
        const QString id = m_rows.id(row);
        if (place.selected.contains(id))
            selection.select(m_rows.index(row), m_rows.index(row));
        if (id == place.current)
            current = m_rows.index(row);
    }
    // The keyboard's focus needs a row to stand on.
    if (!current.isValid() && hasFocus() && m_rows.rowCount() > 0)
        current = m_rows.index(0);
    if (current.isValid())
        selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

void AdminListView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    VirtualListView::currentChanged(current, previous);
    m_rowsShown.start(0);
}

void AdminListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    VirtualListView::selectionChanged(selected, deselected);
    m_rowsShown.start(0);
}

void AdminListView::updateGeometries()
{
    VirtualListView::updateGeometries();
    m_rowsShown.start(0);
}

void AdminListView::scrollContentsBy(int dx, int dy)
{
    VirtualListView::scrollContentsBy(dx, dy);
    // What lies on a row must not trail behind it.
    Q_EMIT rowsShown();
}

bool AdminListView::viewportEvent(QEvent* event)
{
    const QModelIndex before = hoveredIndex();
    const bool handled = VirtualListView::viewportEvent(event);
    if (hoveredIndex() != before)
        m_rowsShown.start(0);
    return handled;
}

void AdminListView::paintEvent(QPaintEvent* event)
{
    if (const int count = m_rows.rowCount(); count > 0) {
        const QRect first = visualRect(m_rows.index(0));
        const QRect last = visualRect(m_rows.index(count - 1));
        QRect card = cardArea(first).united(cardArea(last)).adjusted(-outline, -outline, outline, outline);
        // An edge that is far out of sight need not be painted where it is.
        card.setTop(std::max(card.top(), -2 * Radius::card));
        card.setBottom(std::min(card.bottom(), viewport()->height() + 2 * Radius::card));
        QPainter painter(viewport());
        PaintShapes::outlined(painter, card, Radius::card, Theme::color(ColorRole::card),
                              Theme::color(ColorRole::hairline));
    }
    VirtualListView::paintEvent(event);
}

void AdminListView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Delete && selectionMode() != NoSelection) {
        Q_EMIT deleteRequested();
        event->accept();
    } else {
        VirtualListView::keyPressEvent(event);
    }
}

void AdminListView::contextMenuEvent(QContextMenuEvent* event)
{
    const bool byKeyboard = event->reason() == QContextMenuEvent::Keyboard;
    const QModelIndex index = byKeyboard ? currentIndex() : indexAt(event->pos());
    if (!index.isValid())
        return;
    const QPoint place = byKeyboard ? visualRect(index).center() : event->pos();
    Q_EMIT menuRequested(viewport()->mapToGlobal(place));
    event->accept();
}

void AdminListView::focusInEvent(QFocusEvent* event)
{
    VirtualListView::focusInEvent(event);
    m_rowsShown.start(0);
}

void AdminListView::focusOutEvent(QFocusEvent* event)
{
    VirtualListView::focusOutEvent(event);
    m_rowsShown.start(0);
}

} // namespace orvia
