#include "Views/AdminViews/RowControls.h"

#include "Views/AdminViews/AdminListView.h"
#include "Views/Widgets/FocusRing.h"

#include <QCoreApplication>
#include <QEvent>

#include <algorithm>

namespace orvia {

RowControls::RowControls(AdminListView& list, Delegate delegate)
    : QObject(&list)
    , m_list(list)
    , m_delegate(std::move(delegate))
{
    connect(&list, &AdminListView::rowsShown, this, &RowControls::placeControls);
}

QModelIndex RowControls::indexOf(const QWidget* control) const
{
    const auto found = std::find_if(m_placed.begin(), m_placed.end(),
                                    [control](const Placed& placed) { return placed.control == control; });
    return found == m_placed.end() ? QModelIndex() : QModelIndex(found->index);
}

bool RowControls::isInUse(const QModelIndex& index) const
{
    return std::any_of(m_placed.begin(), m_placed.end(), [&index](const Placed& placed) {
        return placed.index == index && (placed.control->hasFocus() || placed.control->underMouse());
    });
}

void RowControls::placeControls()
{
    std::vector<Placed> before = std::move(m_placed);
    m_placed = before; // for isInUse
    const auto [first, last] = m_list.visibleRows();
    std::vector<QModelIndex> wanted;
    for (int row = std::max(first, 0); row <= last; ++row) {
        const QModelIndex index = m_list.model()->index(row, 0);
        if (m_delegate.isWanted(index) || isInUse(index))
            wanted.push_back(index);
    }
    // A control stays with its row; only those that lost theirs serve again.
    m_placed.clear();
    for (const QModelIndex& index : wanted)
        m_placed.push_back({index, take(index, before)});
    for (const Placed& left : before)
        retire(left.control);
    QWidget* previous = &m_list;
    const QPoint origin = m_list.viewport()->mapTo(m_list.parentWidget(), QPoint());
    for (Placed& placed : m_placed) {
        if (!placed.control)
            placed.control = makeControl();
        m_delegate.fill(*placed.control, placed.index,
                        AdminListView::contentArea(m_list.visualRect(placed.index)).translated(origin));
        placed.control->show();
        QWidget::setTabOrder(previous, placed.control);
        previous = placed.control;
    }
}

/// The control that already lies on this row, taken out of @p from; null when there is none.
QWidget* RowControls::take(const QModelIndex& index, std::vector<Placed>& from)
{
    const auto found = std::find_if(from.begin(), from.end(),
                                    [&index](const Placed& placed) { return placed.index == index; });
    if (found == from.end())
        return nullptr;
    QWidget* control = found->control;
    from.erase(found);
    return control;
}

QWidget* RowControls::makeControl()
{
    if (!m_spare.empty()) {
        QWidget* control = m_spare.back();
        m_spare.pop_back();
        return control;
    }
    QWidget* control = m_delegate.make(m_list.parentWidget());
    control->installEventFilter(this);
    control->raise();
    return control;
}

void RowControls::retire(QWidget* control)
{
    // Left to itself the focus would go on to whatever comes next.
    if (control->hasFocus())
        m_list.setFocus(FocusRing::isShown(control) ? Qt::ShortcutFocusReason : Qt::OtherFocusReason);
    control->hide();
    m_spare.push_back(control);
}

bool RowControls::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Enter:
        m_list.setControlUnderPointer(indexOf(static_cast<QWidget*>(watched)));
        break;
    case QEvent::Leave:
    case QEvent::Hide:
        m_list.setControlUnderPointer({});
        break;
    case QEvent::FocusOut:
        // Looks at the rows anew: a control may be needed no longer.
        m_list.setControlUnderPointer(static_cast<QWidget*>(watched)->underMouse()
                                          ? indexOf(static_cast<QWidget*>(watched))
                                          : QModelIndex());
        break;
    case QEvent::Wheel:
        return QCoreApplication::sendEvent(m_list.viewport(), event);
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace orvia
