#include "Views/Widgets/VirtualListView.h"
#include "Support/Waiting.h"

#include <QAbstractListModel>
#include <QAccessible>
#include <QApplication>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStyledItemDelegate>
#include <QTest>

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

constexpr int rowHeight = 76;

/// Counts how often it is asked for a row.
class CountingModel : public QAbstractListModel {
public:
    explicit CountingModel(int rows)
        : m_rows(rows)
    {
    }

    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : m_rows; }

    QVariant data(const QModelIndex& index, int role) const override
    {
        ++dataCalls;
        return role == Qt::AccessibleTextRole ? u"Row %1"_s.arg(index.row()) : QVariant();
    }

    void insertAtTop()
    {
        beginInsertRows({}, 0, 0);
        ++m_rows;
        endInsertRows();
    }

    void removeAt(int row)
    {
        beginRemoveRows({}, row, row);
        --m_rows;
        endRemoveRows();
    }

    void moveToTop(int row)
    {
        beginMoveRows({}, row, row, {}, 0);
        endMoveRows();
    }

    void change(int row) { Q_EMIT dataChanged(index(row), index(row)); }

    mutable int dataCalls = 0;

private:
    int m_rows;
};

class CountingDelegate : public QStyledItemDelegate {
public:
    void paint(QPainter*, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        painted.append(index.row());
        if (option.state.testFlag(QStyle::State_HasFocus))
            focused = index.row();
    }

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override
    {
        ++sizeHints;
        return {100, rowHeight};
    }

    mutable QList<int> painted;
    mutable int sizeHints = 0;
    mutable int focused = -1;
};

class VirtualListViewTest : public testing::TestWithParam<int> {
protected:
    VirtualListViewTest()
        : model(GetParam())
    {
        view.setItemDelegate(&delegate);
        view.setRowHeight(rowHeight);
        view.setModel(&model);
        view.resize(320, 600);
        view.show();
        view.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&view));
        settle();
    }

    void settle()
    {
        EXPECT_TRUE(waitUntil([&] { return !delegate.painted.isEmpty(); }));
        QApplication::processEvents();
        QApplication::sendPostedEvents();
        forget();
    }

    void forget()
    {
        delegate.painted.clear();
        delegate.sizeHints = 0;
        model.dataCalls = 0;
    }

    /// What one change cost, with the repaint that it caused.
    void expectCheap(const char* what)
    {
        QApplication::processEvents();
        QApplication::processEvents();
        EXPECT_LE(delegate.painted.size(), 2 * (600 / rowHeight + 2)) << what;
        EXPECT_EQ(delegate.sizeHints, 0) << what;
        EXPECT_LE(model.dataCalls, 100) << what;
        forget();
    }

    CountingModel model;
    CountingDelegate delegate;
    VirtualListView view;
};

} // namespace

TEST_P(VirtualListViewTest, AnyChangeCostsWhatIsVisible)
{
    view.viewport()->update();
    expectCheap("painting");
    model.insertAtTop();
    EXPECT_EQ(view.model()->rowCount(), GetParam() + 1);
    expectCheap("inserting");
    model.change(2);
    expectCheap("changing");
    model.change(GetParam() - 1);
    expectCheap("changing what is out of sight");
    model.moveToTop(GetParam() - 1);
    expectCheap("moving");
    model.removeAt(0);
    expectCheap("removing");
    view.resize(300, 590);
    expectCheap("resizing");
    view.scrollToBottom();
    expectCheap("scrolling");
    view.setCurrentIndex(model.index(GetParam() / 2));
    expectCheap("selecting");
}

INSTANTIATE_TEST_SUITE_P(Sizes, VirtualListViewTest, testing::Values(30, 100'000));

class LongListTest : public VirtualListViewTest {};

TEST_P(LongListTest, ReachesEveryRowByKeyboardAndPointer)
{
    const int rows = GetParam();
    view.setFocus(Qt::TabFocusReason);
    const std::pair<Qt::Key, int> steps[] = {{Qt::Key_End, rows - 1}, {Qt::Key_Up, rows - 2},
                                             {Qt::Key_Home, 0},       {Qt::Key_Down, 1},
                                             {Qt::Key_PageDown, 7},   {Qt::Key_PageUp, 1}};
    for (const auto& [key, row] : steps) {
        QTest::keyClick(&view, key);
        EXPECT_EQ(view.currentIndex().row(), row) << key;
        EXPECT_TRUE(view.selectionModel()->isRowSelected(row)) << key;
        EXPECT_TRUE(view.viewport()->rect().contains(view.visualRect(view.currentIndex()))) << key;
        QApplication::processEvents();
        EXPECT_EQ(delegate.focused, row) << "the ring goes along";
    }
    EXPECT_EQ(view.verticalScrollBar()->maximum(), rows * rowHeight - 600);

    view.verticalScrollBar()->setValue(500 * rowHeight + 10);
    const QModelIndex hit = view.indexAt(QPoint(50, 100));
    EXPECT_EQ(hit.row(), 501);
    EXPECT_TRUE(view.visualRect(hit).contains(50, 100));
    QSignalSpy clicks(&view, &QAbstractItemView::clicked);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(50, 100));
    EXPECT_EQ(view.currentIndex().row(), 501);
    EXPECT_EQ(clicks.count(), 1);

    QSignalSpy activations(&view, &QAbstractItemView::activated);
    QTest::keyClick(&view, Qt::Key_Return);
    EXPECT_EQ(activations.count(), 1);
}

TEST_P(LongListTest, TellsAssistiveToolsPositionAndSize)
{
    view.scrollToBottom();
    QAccessibleInterface* list = QAccessible::queryAccessibleInterface(&view);
    EXPECT_EQ(list->role(), QAccessible::List);
    EXPECT_EQ(list->childCount(), GetParam());
    QAccessibleInterface* last = list->child(GetParam() - 1);
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->role(), QAccessible::ListItem);
    EXPECT_EQ(last->text(QAccessible::Name), u"Row %1"_s.arg(GetParam() - 1));
    EXPECT_EQ(list->indexOfChild(last), GetParam() - 1);
    EXPECT_TRUE(
        QRect(view.viewport()->mapToGlobal(QPoint()), view.viewport()->size()).contains(last->rect()));
}

TEST_P(LongListTest, KeepsSelectionAndHoverWhenRowsComeAndGo)
{
    view.setCurrentIndex(model.index(5));
    model.insertAtTop();
    EXPECT_EQ(view.currentIndex().row(), 6);
    model.removeAt(0);
    EXPECT_EQ(view.currentIndex().row(), 5);
    while (model.rowCount() > GetParam() - 3)
        model.removeAt(model.rowCount() - 1);
    QApplication::processEvents();
    EXPECT_EQ(view.verticalScrollBar()->maximum(), (GetParam() - 3) * rowHeight - 600);
}

INSTANTIATE_TEST_SUITE_P(Long, LongListTest, testing::Values(100'000));

} // namespace orvia::test
