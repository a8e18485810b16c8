#pragma once

#include "Views/Widgets/VirtualListView.h"

#include <vector>

namespace orvia {

/// A virtual list whose rows leave out the separator next to a highlighted one, and which stays where it is
/// scrolled to while rows come, go and move above.
class RowListView : public VirtualListView {
    Q_OBJECT

public:
    using VirtualListView::VirtualListView;

    /// Remembers the rows in sight before the model changes.
    void keepPlace();
    /// Scrolls so that most of them are again where they were. At the top, what is new comes into sight.
    void restorePlace();

protected:
    bool viewportEvent(QEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    void repaintHoverFrom(const QModelIndex& before);

    struct KeptRow {
        QPersistentModelIndex index;
        int row;
    };
    std::vector<KeptRow> m_keptRows;
};

} // namespace orvia
