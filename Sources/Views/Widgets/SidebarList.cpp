#include "Views/Widgets/SidebarList.h"

#include "Platform/ShownText.h"
#include "Theme/Theme.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/PaintShapes.h"

#include <QAbstractListModel>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QStyledItemDelegate>
#include <QWheelEvent>

namespace orvia {

namespace {

constexpr int leastRowHeight = 28;
constexpr int rowInset = 8;
constexpr int rowPadding = 8;
constexpr int iconSize = 16;
constexpr int iconGap = 8;

class SidebarDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const QRect row = option.rect.adjusted(rowInset, 0, -rowInset, 0);
        const bool selected = option.state.testFlag(QStyle::State_Selected);
        if (selected || option.state.testFlag(QStyle::State_MouseOver))
            PaintShapes::fillRounded(
                *painter, row, Radius::row,
                Theme::color(selected ? ColorRole::sidebarSelection : ColorRole::sidebarHover));
        if (option.state.testFlag(QStyle::State_HasFocus))
            FocusRing::paintInside(*painter, row, Radius::row);
        const bool mirrored = option.direction == Qt::RightToLeft;
        const QRect icon = QStyle::visualRect(option.direction, row,
                                              QRect(row.x() + rowPadding, row.y(), iconSize, row.height()));
        Theme::drawIcon(*painter, icon, index.data(Qt::UserRole).toString(), iconSize,
                        selected ? ColorRole::accentMark : ColorRole::icon);
        const int lead = rowPadding + iconSize + iconGap;
        const QRect text =
            mirrored ? row.adjusted(rowPadding, 0, -lead, 0) : row.adjusted(lead, 0, -rowPadding, 0);
        painter->setFont(Theme::font(selected ? TextRole::bodyMedium : TextRole::body));
        painter->setPen(Theme::color(ColorRole::textPrimary));
        painter->drawText(text,
                          Qt::AlignVCenter | (mirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::TextSingleLine,
                          painter->fontMetrics().elidedText(shownLine(index.data(Qt::DisplayRole).toString()),
                                                            Qt::ElideRight, text.width()));
    }
};

} // namespace

class SidebarModel : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    /// Answers whether anything changed.
    bool setRows(std::vector<SidebarList::Row> rows)
    {
        if (rows == m_rows)
            return false;
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
        return true;
    }

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        const SidebarList::Row& row = m_rows[static_cast<size_t>(index.row())];
        switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return row.label;
        case Qt::ToolTipRole:
            return shownToolTip(row.label);
        case Qt::UserRole:
            return row.iconName;
        default:
            return {};
        }
    }

private:
    std::vector<SidebarList::Row> m_rows;
};

SidebarList::SidebarList(const QString& accessibleName, QWidget* parent)
    : VirtualListView(parent)
    , m_rows(new SidebarModel(this))
{
    setAccessibleName(accessibleName);
    setModel(m_rows);
    setItemDelegate(new SidebarDelegate(this));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    // The sidebar shows through.
    QPalette transparent = viewport()->palette();
    transparent.setColor(QPalette::Base, Qt::transparent);
    viewport()->setPalette(transparent);
    viewport()->setAutoFillBackground(false);
    applyTheme();
    connect(&Theme::shared(), &Theme::changed, this, &SidebarList::applyTheme);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        if (const int row = selectedRow(); m_telling && row >= 0)
            Q_EMIT rowChosen(row);
    });
}

void SidebarList::setRows(std::vector<Row> rows)
{
    const QScopedValueRollback silent(m_telling, false);
    if (m_rows->setRows(std::move(rows)))
        updateGeometry();
}

void SidebarList::selectRow(int row)
{
    const QScopedValueRollback silent(m_telling, false);
    if (row < 0)
        selectionModel()->clear();
    else
        selectionModel()->setCurrentIndex(m_rows->index(row), QItemSelectionModel::ClearAndSelect);
}

int SidebarList::selectedRow() const
{
    const QModelIndexList selected = selectedIndexes();
    return selected.isEmpty() ? -1 : selected.first().row();
}

QSize SidebarList::sizeHint() const
{
    return {0, m_rows->rowCount() * rowHeight()};
}

QSize SidebarList::minimumSizeHint() const
{
    return sizeHint();
}

void SidebarList::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    VirtualListView::scrollTo(index, hint);
    // A row that something else chose moves nothing under the agent's eyes.
    if (!hasFocus())
        return;
    for (QWidget* around = parentWidget(); around; around = around->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(around)) {
            const QRect row = visualRect(index);
            const QPoint centre = viewport()->mapTo(area->widget(), row.center());
            area->ensureVisible(centre.x(), centre.y(), 0, row.height());
            return;
        }
    }
}

QItemSelectionModel::SelectionFlags SidebarList::selectionCommand(const QModelIndex& index,
                                                                  const QEvent*) const
{
    // One row is always chosen: nothing takes a choice back.
    return index.isValid() ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::NoUpdate;
}

void SidebarList::wheelEvent(QWheelEvent* event)
{
    event->ignore(); // the sidebar scrolls as a whole
}

void SidebarList::applyTheme()
{
    const QFontMetrics metrics(Theme::font(TextRole::body));
    setRowHeight(std::max(leastRowHeight, metrics.height() + Spacing::medium));
    updateGeometry();
}

} // namespace orvia
