#pragma once

#include <QWidget>

#include <functional>
#include <map>
#include <vector>

class QScrollArea;

namespace orvia {

/// A column of rows inside a scroll area of which only those near the visible part exist as widgets, so that
/// ten thousand rows cost as much as a hundred. Short columns exist whole. Rows that scroll away serve again
/// for others, except the one with the focus and its neighbours, which the Tab key must find.
class PanelRows : public QWidget {
    Q_OBJECT

public:
    struct Delegate {
        /// Makes an empty row.
        std::function<QWidget*(QWidget* parent)> make;
        /// Fills @p row for @p index. The focus that moves while the records behind the rows change can make
        /// the area scroll before the column knows of the change, so the index may lie beyond the records.
        std::function<void(QWidget& row, qsizetype index)> fill;
    };

    PanelRows(QScrollArea& area, Delegate delegate, QWidget* parent);

    /// Sets the heights of all rows and fills those that exist anew. @p added tells how many of them are new
    /// at the top, so that the focus stays with its row.
    void setHeights(const std::vector<int>& heights, qsizetype added = 0);
    /// Fills the rows that exist anew.
    void refill();
    qsizetype count() const { return static_cast<qsizetype>(m_offsets.size()) - 1; }
    /// Whether there may be more rows than exist.
    bool isPartial() const { return count() > smallCount; }
    /// The rows that exist, by index.
    const std::map<qsizetype, QWidget*>& rows() const { return m_rows; }
    /// The index of a row that exists, or -1.
    qsizetype indexOf(const QWidget* row) const;

Q_SIGNALS:
    /// Other rows exist than before.
    void rowsChanged();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    /// A column of up to this many rows exists whole.
    static constexpr qsizetype smallCount = 60;

    struct Span {
        qsizetype first = 0; ///< inclusive
        qsizetype last = -2; ///< inclusive; -1 when there is no row, -2 when it is not known
    };

    Span visibleSpan(int margin) const;
    qsizetype focusedIndex() const;
    void materialise();
    void place(qsizetype index, QWidget& row) const;

    QScrollArea& m_area;
    Delegate m_delegate;
    std::vector<int> m_offsets{0}; ///< the top of every row, and the bottom of the last one
    std::map<qsizetype, QWidget*> m_rows;
    std::vector<QWidget*> m_spare;
    Span m_span;
    bool m_materialising = false;
};

} // namespace orvia
