#include "Views/AdminViews/AdminRowDelegate.h"

#include "Theme/Theme.h"
#include "Views/AdminViews/AdminListView.h"
#include "Views/AdminViews/AdminRecordsModel.h"
#include "Views/ConversationListView/RowText.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/PaintShapes.h"
#include "Views/Widgets/Tag.h"

#include <QHelpEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

namespace orvia {

namespace {

constexpr int ringInset = 3;

/// @p row with the card's round corners where it is the first or the last one.
QPainterPath roundedRow(QRectF row, bool isFirst, bool isLast)
{
    constexpr qreal radius = Radius::card - 1;
    // The corners that are not round lie outside, and are clipped away.
    const QRectF shape = row.adjusted(0, isFirst ? 0 : -2 * radius, 0, isLast ? 0 : 2 * radius);
    QPainterPath rounded;
    rounded.addRoundedRect(shape, radius, radius);
    QPainterPath whole;
    whole.addRect(row);
    return rounded.intersected(whole);
}

} // namespace

AdminRowDelegate::AdminRowDelegate(AdminListView& list)
    : QStyledItemDelegate(&list)
    , m_list(list)
{
}

void AdminRowDelegate::paintGround(QPainter& painter, const QStyleOptionViewItem& option,
                                   const QModelIndex& index, bool isHovered) const
{
    const QRect row = AdminListView::cardArea(option.rect);
    const bool isFirst = index.row() == 0;
    const bool isLast = index.row() + 1 == m_list.rows().rowCount();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    if (isSelected || isHovered) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillPath(roundedRow(row, isFirst, isLast),
                         Theme::color(isSelected ? ColorRole::listSelection : ColorRole::hover));
        painter.setRenderHint(QPainter::Antialiasing, false);
    }
    if (!isFirst)
        PaintShapes::hairLine(painter, row.left(), row.right() + 1, row.top());
    if (option.state.testFlag(QStyle::State_HasFocus))
        FocusRing::paintInside(painter, QRectF(row).adjusted(ringInset, ringInset, -ringInset, -ringInset),
                               Radius::highlight);
}

void AdminRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const
{
    const bool isHovered = m_list.isUnderPointer(index);
    paintGround(*painter, option, index, isHovered);
    const AdminRow row = m_list.rows().row(index.row());
    const auto parts = AdminRowGeometry::of(row, AdminListView::contentArea(option.rect), m_list.trailing(),
                                            option.direction);
    paintRowText(*painter, parts.title, shownLine(row.title),
                 Theme::font(row.titleIsCode ? TextRole::code : TextRole::bodyMedium),
                 Theme::color(ColorRole::textPrimary), option.direction);
    paintRowText(*painter, parts.detail, shownLine(row.detail), Theme::font(TextRole::footnote),
                 Theme::color(ColorRole::textSecondary), option.direction);
    if (!row.tag.isEmpty()) {
        const ColorRole fill = option.state.testFlag(QStyle::State_Selected) ? ColorRole::tagSelected
                               : isHovered                                   ? ColorRole::tagHover
                                                                             : ColorRole::tag;
        Tag::paint(*painter, parts.tag, shownLine(row.tag), fill);
    }
    if (!row.badge.isEmpty())
        BadgeLabel::paint(*painter, parts.badge, row.badge);
}

bool AdminRowDelegate::helpEvent(QHelpEvent* event, QAbstractItemView*, const QStyleOptionViewItem& option,
                                 const QModelIndex& index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return false;
    const AdminRow row = m_list.rows().row(index.row());
    const auto parts = AdminRowGeometry::of(row, AdminListView::contentArea(m_list.visualRect(index)),
                                            m_list.trailing(), option.direction);
    const auto isCut = [](const QString& text, const QRect& part, TextRole role) {
        return QFontMetrics(Theme::font(role)).horizontalAdvance(shownLine(text)) > part.width();
    };
    const auto pointsAt = [event](const QRect& part) { return part.contains(event->pos()); };
    QString text;
    if (pointsAt(parts.title)
        && isCut(row.title, parts.title, row.titleIsCode ? TextRole::code : TextRole::bodyMedium))
        text = row.title;
    else if (pointsAt(parts.tag) && parts.tag.width() < Tag::sizeFor(shownLine(row.tag)).width())
        text = row.tag;
    else if (pointsAt(parts.detail) && isCut(row.detail, parts.detail, TextRole::footnote))
        text = row.detail;
    if (text.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(event->globalPos(), shownToolTip(text), m_list.viewport());
    return true;
}

} // namespace orvia
