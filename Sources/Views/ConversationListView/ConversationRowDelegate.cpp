#include "Views/ConversationListView/ConversationRowDelegate.h"

#include "Views/ConversationListView/ConversationListModel.h"
#include "Views/ConversationListView/ConversationRow.h"
#include "Views/ConversationListView/TimeTick.h"
#include "Views/Widgets/VirtualListView.h"

namespace orvia {

namespace {

bool isHighlighted(const VirtualListView* view, const QModelIndex& index)
{
    return view && index.isValid()
           && (view->hoveredIndex() == index || view->selectionModel()->isSelected(index));
}

} // namespace

ConversationRowDelegate::ConversationRowDelegate(const ConversationListModel& model, TimeTick& tick,
                                                 QObject* parent)
    : QStyledItemDelegate(parent)
    , m_model(model)
    , m_tick(tick)
{
}

void ConversationRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                    const QModelIndex& index) const
{
    const auto* view = qobject_cast<const VirtualListView*>(option.widget);
    RowState state;
    state.isSelected = option.state.testFlag(QStyle::State_Selected);
    state.isHovered = option.state.testFlag(QStyle::State_MouseOver);
    state.showsFocus = option.state.testFlag(QStyle::State_HasFocus);
    state.hasSeparator =
        !state.isSelected && !state.isHovered && !isHighlighted(view, index.siblingAtRow(index.row() + 1));
    state.direction = option.direction;
    const ConversationRow row = m_model.row(index.row());
    m_painter.paint(*painter, option.rect, row, state, m_tick.now());
    m_tick.request(row.lastMessageAt);
}

QSize ConversationRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const
{
    return {option.rect.width(), rowHeight()};
}

} // namespace orvia
