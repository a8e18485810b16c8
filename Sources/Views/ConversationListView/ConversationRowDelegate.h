#pragma once

#include "Views/ConversationListView/ConversationRowPainter.h"

#include <QStyledItemDelegate>

namespace orvia {

class ConversationListModel;
class TimeTick;

/// Paints the rows of a conversation list from the model's values.
class ConversationRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    ConversationRowDelegate(const ConversationListModel& model, TimeTick& tick, QObject* parent = nullptr);

    int rowHeight() const { return m_painter.height(); }
    /// Takes the theme's fonts anew.
    void followTheme() { m_painter = ConversationRowPainter(); }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    const ConversationListModel& m_model;
    TimeTick& m_tick;
    ConversationRowPainter m_painter;
};

} // namespace orvia
