#include "Views/VisitorPanel/PanelRows.h"

#include <QApplication>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>

namespace orvia {

namespace {

/// How far beyond the visible part rows exist, in pixels, and how much of that may be used up before more are
/// made.
constexpr int keptMargin = 900;
constexpr int leastMargin = 300;
/// What lies beyond is not shown: a widget's height is limited.
constexpr std::size_t longestColumn = 100'000;

} // namespace

PanelRows::PanelRows(QScrollArea& area, Delegate delegate, QWidget* parent)
    : QWidget(parent)
    , m_area(area)
    , m_delegate(std::move(delegate))
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(area.verticalScrollBar(), &QScrollBar::valueChanged, this, &PanelRows::materialise);
    connect(area.verticalScrollBar(), &QScrollBar::rangeChanged, this, &PanelRows::materialise);
}

void PanelRows::setHeights(const std::vector<int>& heights, qsizetype added)
{
    if (added > 0) {
        std::map<qsizetype, QWidget*> moved;
        for (const auto& [index, row] : m_rows)
            moved.emplace(index + added, row);
        m_rows = std::move(moved);
    }
    m_offsets.assign(1, 0);
    m_offsets.reserve(std::min(heights.size(), longestColumn) + 1);
    for (std::size_t row = 0; row < std::min(heights.size(), longestColumn); ++row)
        m_offsets.push_back(m_offsets.back() + heights[row]);
    m_span = {};
    setFixedHeight(m_offsets.back());
    materialise();
    refill();
}

void PanelRows::refill()
{
    {
        // A row that hides what had the focus makes the area scroll, which must not exchange rows meanwhile.
        const QScopedValueRollback guard(m_materialising, true);
        for (const auto& [index, row] : m_rows) {
            place(index, *row);
            m_delegate.fill(*row, index);
        }
    }
    materialise();
}

qsizetype PanelRows::indexOf(const QWidget* row) const
{
    const auto found =
        std::find_if(m_rows.begin(), m_rows.end(), [row](const auto& entry) { return entry.second == row; });
    return found == m_rows.end() ? -1 : found->first;
}

PanelRows::Span PanelRows::visibleSpan(int margin) const
{
    if (count() <= smallCount)
        return {0, count() - 1};
    const int top = mapFrom(&m_area, QPoint(0, 0)).y() - margin;
    const int bottom = top + m_area.height() + 2 * margin;
    const auto begin = m_offsets.begin();
    const auto first = std::upper_bound(begin, m_offsets.end(), top) - begin - 1;
    const auto last = std::lower_bound(begin, m_offsets.end(), bottom) - begin - 1;
    return {std::clamp<qsizetype>(first, 0, count() - 1), std::clamp<qsizetype>(last, 0, count() - 1)};
}

qsizetype PanelRows::focusedIndex() const
{
    QWidget* focused = QApplication::focusWidget();
    if (!focused || !isAncestorOf(focused))
        return -1;
    while (focused->parentWidget() != this)
        focused = focused->parentWidget();
    return indexOf(focused);
}

void PanelRows::place(qsizetype index, QWidget& row) const
{
    const auto position = static_cast<std::size_t>(index);
    row.setGeometry(0, m_offsets[position], width(), m_offsets[position + 1] - m_offsets[position]);
}

void PanelRows::materialise()
{
    if (m_materialising)
        return;
    const Span needed = visibleSpan(leastMargin);
    if (needed.first >= m_span.first && needed.last <= m_span.last)
        return;
    const QScopedValueRollback guard(m_materialising, true);
    m_span = visibleSpan(keptMargin);
    const qsizetype focused = focusedIndex();
    const auto isKept = [this, focused](qsizetype index) {
        return (index >= m_span.first && index <= m_span.last)
               || (focused >= 0 && index < count() && std::abs(index - focused) <= 1);
    };
    for (auto entry = m_rows.begin(); entry != m_rows.end();) {
        if (isKept(entry->first)) {
            ++entry;
            continue;
        }
        entry->second->hide();
        m_spare.push_back(entry->second);
        entry = m_rows.erase(entry);
    }
    const auto make = [this](qsizetype index) {
        if (index < 0 || index >= count() || m_rows.contains(index))
            return;
        QWidget* row = m_spare.empty() ? m_delegate.make(this) : m_spare.back();
        if (!m_spare.empty())
            m_spare.pop_back();
        m_rows.emplace(index, row);
        place(index, *row);
        m_delegate.fill(*row, index);
        row->show();
    };
    for (qsizetype index = m_span.first; index <= m_span.last; ++index)
        make(index);
    if (focused >= 0) {
        make(focused - 1);
        make(focused + 1);
    }
    // Assistive tools read the rows in the order in which they are stacked.
    for (const auto& [index, row] : m_rows)
        row->raise();
    Q_EMIT rowsChanged();
}

void PanelRows::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    for (const auto& [index, row] : m_rows)
        place(index, *row);
    materialise();
}

void PanelRows::moveEvent(QMoveEvent* event)
{
    QWidget::moveEvent(event);
    materialise();
}

void PanelRows::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    materialise();
}

} // namespace orvia
