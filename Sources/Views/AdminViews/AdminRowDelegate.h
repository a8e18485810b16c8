#pragma once

#include <QStyledItemDelegate>

namespace orvia {

class AdminListView;

/// Paints a row of an administration list, all but the code, which lies on it as a text of its own. The
/// tooltip shows what did not fit.
class AdminRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit AdminRowDelegate(AdminListView& list);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

private:
    void paintGround(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index,
                     bool isHovered) const;

    AdminListView& m_list;
};

} // namespace orvia
