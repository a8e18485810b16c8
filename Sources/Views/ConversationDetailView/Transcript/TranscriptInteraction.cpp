#include "Views/ConversationDetailView/Transcript/TranscriptView.h"

#include "Platform/ShownText.h"
#include "Views/ConversationDetailView/Transcript/TranscriptAccessibility.h"
#include "Views/Widgets/FocusRing.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QScrollBar>
#include <QStyleHints>
#include <QToolTip>

namespace orvia {

namespace {

constexpr int autoScrollInterval = 30;
constexpr int autoScrollStep = 18;

} // namespace

RowLayout::Look TranscriptView::look(qsizetype row) const
{
    RowLayout::Look look;
    if (row == m_selectedRow)
        look.selection = m_selection;
    if (row == m_hovered.row)
        look.hovered = m_hovered.part;
    if (row == m_pressed.row && m_pressed == m_hovered)
        look.pressed = m_pressed.part;
    if (row == m_current.row && m_showsFocus && hasFocus()) {
        look.focused = m_current.part;
        if (m_current.part == Part::body && row == m_selectedRow)
            look.caret = m_selection.cursor;
    }
    return look;
}

// Selecting and copying

void TranscriptView::select(qsizetype row, const BubbleText::Selection& selection)
{
    m_selectedRow = row;
    m_selection = selection;
    m_selectsAll = false;
    viewport()->update();
    if (QClipboard* clipboard = QGuiApplication::clipboard();
        clipboard->supportsSelection() && !selection.isEmpty())
        clipboard->setText(copyableText(), QClipboard::Selection);
    tellSelectionChanged(*this, row);
}

void TranscriptView::selectAll()
{
    const Stop stop = m_current.isValid() ? m_current : stopInSight();
    const RowLayout* layout = rowLayout(stop.row);
    if (!layout || !layout->body())
        return;
    select(stop.row, {0, layout->body()->shownLength()});
    m_selectsAll = true;
}

QString TranscriptView::copyableText() const
{
    const bool selected = m_selectedRow >= 0 && !m_selection.isEmpty();
    const qsizetype index = selected ? m_selectedRow : m_current.row;
    if (index < 0 || index >= rowCount())
        return {};
    const BubbleText text(m_content.row(index).body, {});
    return selected && !m_selectsAll ? text.selectedText(m_selection) : text.text();
}

void TranscriptView::copy() const
{
    const QString text = copyableText();
    if (!text.isEmpty())
        QGuiApplication::clipboard()->setText(text);
}

qsizetype TranscriptView::positionAt(qsizetype row, const QPoint& point) const
{
    const RowLayout* layout = rowLayout(row);
    if (!layout || !layout->body())
        return 0;
    return layout->body()->positionAt(point - rowRect(row).topLeft() - layout->bodyOrigin());
}

void TranscriptView::extendSelection(const QPoint& point)
{
    const qsizetype position = positionAt(m_selectedRow, point);
    const qsizetype low = m_dragOrigin.start();
    const qsizetype high = m_dragOrigin.end();
    const BubbleText::Selection extended = position < low
                                               ? BubbleText::Selection{high, position}
                                               : BubbleText::Selection{low, std::max(position, high)};
    m_selection = extended;
    m_selectsAll = false;
    viewport()->update();
}

// Mouse

TranscriptView::Stop TranscriptView::stopAt(const QPoint& point) const
{
    const qsizetype row = rowAt(point);
    const RowLayout* layout = rowLayout(row);
    if (!layout)
        return {};
    const Part part = layout->partAt(point - rowRect(row).topLeft());
    return part == Part::none ? Stop() : Stop{row, part};
}

void TranscriptView::setHovered(const Stop& stop)
{
    if (stop == m_hovered)
        return;
    m_hovered = stop;
    Qt::CursorShape shape = Qt::ArrowCursor;
    if (stop.part == Part::body)
        shape = Qt::IBeamCursor;
    else if (stop.isValid())
        shape = Qt::PointingHandCursor;
    viewport()->setCursor(shape);
    viewport()->update();
}

void TranscriptView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const Stop stop = stopAt(event->position().toPoint());
    m_showsFocus = false;
    m_pressed = stop;
    setHovered(stop);
    if (stop.isValid())
        m_current = stop;
    const qsizetype position = positionAt(stop.row, event->position().toPoint());
    const bool extends = event->modifiers().testFlag(Qt::ShiftModifier) && stop.row == m_selectedRow;
    if (stop.part == Part::body && extends) {
        m_dragOrigin = {m_selection.anchor, m_selection.anchor};
        extendSelection(event->position().toPoint());
    } else if (stop.part == Part::body) {
        const bool third =
            m_lastDoubleClick.isValid() && stop.row == m_selectedRow
            && m_lastDoubleClick.elapsed() < QGuiApplication::styleHints()->mouseDoubleClickInterval();
        const qsizetype shown = rowLayout(stop.row)->body()->shownLength();
        m_dragOrigin = third ? BubbleText::Selection{0, shown} : BubbleText::Selection{position, position};
        select(stop.row, m_dragOrigin);
        m_selectsAll = third;
    } else {
        select(-1, {});
    }
    m_lastDoubleClick.invalidate();
    m_dragging = stop.part == Part::body;
    viewport()->update();
}

void TranscriptView::mouseDoubleClickEvent(QMouseEvent* event)
{
    const QPoint point = event->position().toPoint();
    const Stop stop = stopAt(point);
    if (event->button() != Qt::LeftButton || stop.part != Part::body)
        return mousePressEvent(event);
    m_dragOrigin = rowLayout(stop.row)->body()->wordAt(positionAt(stop.row, point));
    select(stop.row, m_dragOrigin);
    m_dragging = true;
    m_lastDoubleClick.start();
}

void TranscriptView::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint point = event->position().toPoint();
    if (!m_dragging) {
        setHovered(stopAt(point));
        return;
    }
    extendSelection(point);
    const bool outside = point.y() < 0 || point.y() >= viewport()->height();
    if (outside && !m_autoScroll.isActive())
        m_autoScroll.start(autoScrollInterval, this);
    else if (!outside)
        m_autoScroll.stop();
}

void TranscriptView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_autoScroll.stop();
    const Stop pressed = std::exchange(m_pressed, {});
    if (m_dragging) {
        m_dragging = false;
        const bool all = m_selectsAll;
        select(m_selectedRow, m_selection);
        m_selectsAll = all;
    } else if (pressed.isValid() && stopAt(event->position().toPoint()) == pressed) {
        activate(pressed);
    }
    viewport()->update();
}

void TranscriptView::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_autoScroll.timerId())
        return QAbstractScrollArea::timerEvent(event);
    const QPoint point = viewport()->mapFromGlobal(QCursor::pos());
    if (!m_dragging || (point.y() >= 0 && point.y() < viewport()->height())) {
        m_autoScroll.stop();
        return;
    }
    scrollBy(point.y() < 0 ? -autoScrollStep : autoScrollStep);
    extendSelection(point);
}

bool TranscriptView::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const Stop stop = stopAt(help->pos());
        const QString text =
            stop.part == Part::attachment ? rowLayout(stop.row)->row().attachment->name : QString();
        QToolTip::showText(help->globalPos(), shownToolTip(text), viewport(), partRect(stop));
        return true;
    }
    if (event->type() == QEvent::Leave && !m_dragging)
        setHovered({});
    return QAbstractScrollArea::viewportEvent(event);
}

void TranscriptView::contextMenuEvent(QContextMenuEvent* event)
{
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    const Stop stop = byKey ? m_current : stopAt(viewport()->mapFrom(this, event->pos()));
    if (!stop.isValid())
        return;
    m_current = stop;
    if (stop.row != m_selectedRow)
        select(-1, {});
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    populateMenu(*menu, stop);
    const QPoint place = byKey ? viewport()->mapToGlobal(partRect(stop).center()) : event->globalPos();
    menu->popup(place);
}

void TranscriptView::populateMenu(QMenu& menu, const Stop& stop)
{
    const RowLayout* layout = rowLayout(stop.row);
    if (stop.part == Part::attachment) {
        QAction* open = menu.addAction(tr("Open"), this, [this, stop] { activate(stop); });
        open->setEnabled(layout && layout->row().attachment->url.has_value());
    }
    if (layout && layout->body()) {
        menu.addAction(tr("Copy"), this, &TranscriptView::copy);
        menu.addAction(tr("Select All"), this, &TranscriptView::selectAll);
    }
    if (layout && layout->body() && layout->body()->isCut())
        menu.addAction(tr("Show More"), this, [this, row = stop.row] { activate({row, Part::showMore}); });
}

// Keyboard

void TranscriptView::focusInEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusInEvent(event);
    m_showsFocus = FocusRing::showsFor(event->reason());
    if (m_showsFocus && !m_current.isValid())
        setCurrent(stopInSight());
    viewport()->update();
}

void TranscriptView::focusOutEvent(QFocusEvent* event)
{
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

void TranscriptView::setCurrent(const Stop& stop)
{
    if (!stop.isValid() || stop.row >= rowCount())
        return;
    const std::vector<Part> parts = layOutRow(stop.row).stops();
    if (parts.empty())
        return;
    const bool there = std::find(parts.begin(), parts.end(), stop.part) != parts.end();
    m_current = {stop.row, there ? stop.part : parts.front()};
    ensureVisible(m_current);
    viewport()->update();
    if (hasFocus())
        tellCurrentRow(*this, stop.row);
}

TranscriptView::Stop TranscriptView::stopInSight() const
{
    for (auto entry = m_layouts.rbegin(); entry != m_layouts.rend(); ++entry) {
        const std::vector<Part> parts = entry->second->stops();
        for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
            const Stop stop{entry->first, *part};
            if (partRect(stop).intersects(viewport()->rect()))
                return stop;
        }
    }
    return {};
}

std::optional<TranscriptView::Stop> TranscriptView::neighbour(const Stop& stop, bool forward)
{
    const int step = forward ? 1 : -1;
    for (qsizetype row = stop.row; row >= 0 && row < rowCount(); row += step) {
        const std::vector<Part> parts = layOutRow(row).stops();
        qsizetype at = forward ? -1 : static_cast<qsizetype>(parts.size());
        if (row == stop.row && stop.part != Part::none)
            at = std::find(parts.begin(), parts.end(), stop.part) - parts.begin();
        at += step;
        if (at >= 0 && at < static_cast<qsizetype>(parts.size()))
            return Stop{row, parts[static_cast<std::size_t>(at)]};
    }
    return std::nullopt;
}

void TranscriptView::moveCurrent(bool forward)
{
    if (!m_current.isValid())
        return setCurrent(stopInSight());
    // A text taller than the view is read to its end before the next one gets its turn.
    const QRect part = partRect(m_current);
    const int step = viewport()->height() / 2;
    if (!part.isEmpty() && forward && part.bottom() > viewport()->height())
        return scrollBy(std::min(step, part.bottom() - viewport()->height() + Spacing::medium));
    if (!part.isEmpty() && !forward && part.top() < 0)
        return scrollBy(-std::min(step, Spacing::medium - part.top()));
    if (const std::optional<Stop> next = neighbour(m_current, forward))
        setCurrent(*next);
    else
        scrollBy(forward ? step : -step);
}

void TranscriptView::moveCurrentToEnd(bool last)
{
    const Stop beyond{last ? rowCount() - 1 : 0, Part::none};
    if (const std::optional<Stop> end = neighbour(beyond, !last))
        setCurrent(*end);
    verticalScrollBar()->setValue(last ? verticalScrollBar()->maximum() : 0);
}

void TranscriptView::page(bool forward)
{
    verticalScrollBar()->triggerAction(forward ? QAbstractSlider::SliderPageStepAdd
                                               : QAbstractSlider::SliderPageStepSub);
    if (!partRect(m_current).intersects(viewport()->rect()))
        m_current = stopInSight();
    viewport()->update();
    if (m_current.isValid())
        tellCurrentRow(*this, m_current.row);
}

bool TranscriptView::selectByKey(QKeyEvent& event)
{
    const RowLayout* layout = rowLayout(m_current.row);
    if (m_current.part != Part::body || !layout || !layout->body())
        return false;
    const BubbleText& text = *layout->body();
    const bool shift = event.modifiers().testFlag(Qt::ShiftModifier);
    const bool word = event.modifiers().testFlag(Qt::ControlModifier);
    const BubbleText::Selection old = m_selectedRow == m_current.row ? m_selection : BubbleText::Selection{};
    qsizetype cursor = old.cursor;
    switch (event.key()) {
    case Qt::Key_Left:
        cursor = text.previousPosition(cursor, word);
        break;
    case Qt::Key_Right:
        cursor = text.nextPosition(cursor, word);
        break;
    case Qt::Key_Up:
        cursor = text.verticalPosition(cursor, -1);
        break;
    case Qt::Key_Down:
        cursor = text.verticalPosition(cursor, 1);
        break;
    case Qt::Key_Home:
        cursor = word ? 0 : text.lineStart(cursor);
        break;
    case Qt::Key_End:
        cursor = word ? text.shownLength() : text.lineEnd(cursor);
        break;
    default:
        return false;
    }
    const bool sideways = event.key() == Qt::Key_Left || event.key() == Qt::Key_Right;
    if (!shift && !sideways)
        return false;
    select(m_current.row, {shift ? old.anchor : cursor, cursor});
    return true;
}

bool TranscriptView::navigateByKey(QKeyEvent& event)
{
    switch (event.key()) {
    case Qt::Key_Up:
        moveCurrent(false);
        return true;
    case Qt::Key_Down:
        moveCurrent(true);
        return true;
    case Qt::Key_Home:
        moveCurrentToEnd(false);
        return true;
    case Qt::Key_End:
        moveCurrentToEnd(true);
        return true;
    case Qt::Key_PageUp:
        page(false);
        return true;
    case Qt::Key_PageDown:
        page(true);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (!m_current.isValid() || m_current.part == Part::body)
            return false;
        // A key that is held opens once.
        if (!event.isAutoRepeat())
            activate(m_current);
        return true;
    case Qt::Key_Escape:
        if (m_selectedRow < 0)
            return false;
        select(-1, {});
        return true;
    default:
        return false;
    }
}

void TranscriptView::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy)) {
        copy();
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else {
        const bool byKeyboard = std::exchange(m_showsFocus, true);
        if (selectByKey(*event) || navigateByKey(*event)) {
            viewport()->update();
            return;
        }
        m_showsFocus = byKeyboard;
        event->ignore();
    }
}

} // namespace orvia
