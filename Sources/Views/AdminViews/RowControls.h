#pragma once

#include <QObject>
#include <QPersistentModelIndex>
#include <QRect>

#include <functional>
#include <vector>

class QWidget;

namespace orvia {

class AdminListView;

/// Real controls on those rows of a list that are in sight, at most one on a row. They belong to the list's
/// parent and lie above the list, because assistive tools do not look for controls inside a list's rows.
class RowControls : public QObject {
    Q_OBJECT

public:
    struct Delegate {
        std::function<QWidget*(QWidget* parent)> make;
        /// Whether the row has a control now. A control that is in use stays, whatever this answers.
        std::function<bool(const QModelIndex& index)> isWanted;
        /// Fills @p control for a row of which it has to lie within @p content.
        std::function<void(QWidget& control, const QModelIndex& index, const QRect& content)> fill;
    };

    RowControls(AdminListView& list, Delegate delegate);

    /// The row on which @p control lies; invalid for none.
    QModelIndex indexOf(const QWidget* control) const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Placed {
        QPersistentModelIndex index;
        QWidget* control;
    };

    void placeControls();
    QWidget* take(const QModelIndex& index, std::vector<Placed>& from);
    QWidget* makeControl();
    void retire(QWidget* control);
    bool isInUse(const QModelIndex& index) const;

    AdminListView& m_list;
    Delegate m_delegate;
    std::vector<Placed> m_placed;
    std::vector<QWidget*> m_spare;
};

} // namespace orvia
