#include "Views/ConversationListView/ConversationListView.h"
#include "InboxFixture.h"
#include "Theme/Theme.h"
#include "Views/ConversationListView/ConversationListModel.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/Label.h"

#include <QApplication>
#include <QListView>
#include <QScrollBar>
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QTest>

namespace orvia::test {

using namespace std::chrono_literals;

namespace {

/// Counts what a list asks its delegate for.
class CountingDelegate : public QStyledItemDelegate {
public:
    explicit CountingDelegate(QAbstractItemDelegate* real)
        : m_real(real)
    {
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        ++paints;
        m_real->paint(painter, option, index);
    }
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        ++sizeHints;
        return m_real->sizeHint(option, index);
    }

    mutable int paints = 0;
    mutable int sizeHints = 0;

private:
    QAbstractItemDelegate* m_real;
};

} // namespace

class ConversationListViewTest : public InboxFixture {
protected:
    void SetUp() override { Theme::shared().apply(*qApp); }

    ConversationListView& show()
    {
        view = std::make_unique<ConversationListView>(*session);
        view->resize(320, 700);
        view->show();
        QApplication::setActiveWindow(view.get());
        EXPECT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        return *view;
    }

    template <class Widget>
    Widget& part(const QString& name)
    {
        auto* found = view->findChild<Widget*>(name);
        EXPECT_TRUE(found) << name.toStdString();
        return *found;
    }

    QListView& list() { return part<QListView>(u"conversations"_s); }
    IconButton& refreshButton() { return part<IconButton>(u"refresh"_s); }

    /// Lets what was delivered reach the rows.
    void settle()
    {
        static_cast<ConversationListModel*>(list().model())->applyChanges();
        QCoreApplication::processEvents();
    }

    QStringList shownIds()
    {
        QStringList ids;
        for (int row = 0; row < list().model()->rowCount(); ++row)
            ids.append(
                list().model()->index(row, 0).data(ConversationListModel::conversationIdRole).toString());
        return ids;
    }

    /// The id of the selected row; empty when no row is selected.
    QString selectedRowId()
    {
        const QModelIndexList selected = list().selectionModel()->selectedIndexes();
        EXPECT_LE(selected.size(), 1);
        return selected.isEmpty()
                   ? QString()
                   : selected.first().data(ConversationListModel::conversationIdRole).toString();
    }

    QString shownPage() { return view->findChild<QStackedWidget*>()->currentWidget()->objectName(); }

    std::size_t listRequests() { return service.requests("GET", "/v1/agent/conversations").size(); }
    bool isIdle() { return !session->isLoadingList(); }

    std::unique_ptr<ConversationListView> view;

    void TearDown() override { view.reset(); }
};

TEST_F(ConversationListViewTest, IsTitledByTheFilteredProduct)
{
    sessionWith({});
    ConversationListView& column = show();
    auto& title = part<ElidedLabel>(u"listTitle"_s);
    EXPECT_EQ(title.text(), u"Conversations"_s);
    session->setProductFilter(u"p1"_s);
    EXPECT_EQ(title.text(), u"Larkspur Coffee"_s);
    session->setProductFilter(u"gone"_s);
    EXPECT_EQ(title.text(), u"Conversations"_s);
    session->setProductFilter(u"p1"_s);
    session->logout();
    EXPECT_EQ(column.listTitle(), u"Conversations"_s);
}

TEST_F(ConversationListViewTest, ReloadsOnRequestAndWhenAnotherPageIsNeeded)
{
    sessionWith({makeConversation(u"c"_s)});
    show();
    const auto requestsBy = [&](const std::function<void()>& action) {
        const std::size_t before = listRequests();
        action();
        EXPECT_FALSE(refreshButton().isEnabled());
        QTest::keyClick(view.get(), Qt::Key_F5); // Nothing more while it loads.
        EXPECT_TRUE(waitUntil([&] { return isIdle(); }));
        EXPECT_TRUE(refreshButton().isEnabled());
        return listRequests() - before;
    };
    EXPECT_EQ(requestsBy([&] { QTest::mouseClick(&refreshButton(), Qt::LeftButton); }), 2u);
    EXPECT_EQ(requestsBy([&] { QTest::keyClick(view.get(), Qt::Key_F5); }), 2u);
    EXPECT_EQ(requestsBy([&] { QTest::keyClick(view.get(), Qt::Key_R, Qt::ControlModifier); }), 2u);
    EXPECT_EQ(requestsBy([&] { session->setShowSnoozed(true); }), 2u);
    EXPECT_EQ(requestsBy([&] { session->setQueue(InboxQueue::unassigned); }), 2u);
    EXPECT_TRUE(
        service.requests("GET", "/v1/agent/conversations").back().query().contains("assignee=unassigned"));

    const std::size_t before = listRequests();
    session->setStatusFilter(ConversationStatus::closed);
    session->setProductFilter(u"p1"_s);
    session->setQueue(InboxQueue::unassigned);
    settle();
    EXPECT_TRUE(isIdle());
    EXPECT_EQ(listRequests(), before);
}

TEST_F(ConversationListViewTest, SaysWhyItIsEmptyOnceThatIsKnown)
{
    sessionWith({});
    show();
    session->setQueue(InboxQueue::mine);
    EXPECT_TRUE(waitUntil([&] { return isIdle(); }));
    settle();
    EXPECT_EQ(shownPage(), u"emptyList"_s);
    EXPECT_EQ(part<QWidget>(u"emptyList"_s).findChild<Label*>()->text(), u"Nothing Assigned to You"_s);

    const auto held = service.hold("GET", "/v1/agent/conversations");
    session->setQueue(InboxQueue::all);
    settle();
    EXPECT_EQ(shownPage(), u"conversations"_s) << "nothing is known to be missing while it loads";
    held->answer(answerOf(ConversationsResponse{{{makeConversation(u"c"_s)}}}));
    EXPECT_TRUE(waitUntil([&] { return isIdle(); }));
}

TEST_F(ConversationListViewTest, BindsTheSelectionBothWays)
{
    sessionWithMany(30);
    session->setSelectedConversationId(u"c2"_s);
    show();
    EXPECT_EQ(selectedRowId(), u"c2"_s);

    QTest::mouseClick(list().viewport(), Qt::LeftButton, {},
                      list().visualRect(list().model()->index(4, 0)).center());
    EXPECT_EQ(session->selectedConversationId(), u"c4"_s);
    session->setSelectedConversationId(u"c25"_s);
    EXPECT_EQ(selectedRowId(), u"c25"_s);
    EXPECT_TRUE(list().viewport()->rect().contains(list().visualRect(list().currentIndex())))
        << "it comes into sight";
    session->setSelectedConversationId(u"elsewhere"_s);
    EXPECT_EQ(selectedRowId(), QString());
    EXPECT_EQ(session->selectedConversationId(), u"elsewhere"_s);
    session->setSelectedConversationId(std::nullopt);
    EXPECT_EQ(selectedRowId(), QString());
}

TEST_F(ConversationListViewTest, KeepsTheSelectionThroughEveryChangeOfTheRows)
{
    sessionWithMany(30);
    show();
    session->setSelectedConversationId(u"c5"_s);
    Notifications selections(*session, &Session::selectedConversationIdChanged);
    deliverMessage(u"c5"_s, minutesAgo(0));
    deliverMessage(u"c9"_s, minutesAgo(0));
    settle();
    EXPECT_EQ(selectedRowId(), u"c5"_s);

    Conversation closed = known(u"c5"_s);
    closed.status = ConversationStatus::closed;
    deliver(closed);
    settle();
    EXPECT_EQ(selectedRowId(), QString()) << "no neighbour is selected in its place";
    session->setStatusFilter(ConversationStatus::closed);
    settle();
    EXPECT_EQ(selectedRowId(), u"c5"_s);

    scriptInbox({closed, makeConversation(u"other"_s)});
    runTask(session->refreshConversations());
    EXPECT_EQ(selectedRowId(), u"c5"_s);
    EXPECT_EQ(selections.count, 0);
}

TEST_F(ConversationListViewTest, IsUsableByKeyboard)
{
    sessionWithMany(100);
    Conversation named = known(u"c40"_s);
    named.visitor.name = u"Zoë"_s;
    deliver(named);
    show();
    auto& search = part<QWidget>(u"search"_s);
    search.setFocus(Qt::TabFocusReason);
    QTest::keyClick(&search, Qt::Key_Tab);
    EXPECT_TRUE(list().hasFocus()) << "the list follows the search field";
    EXPECT_EQ(session->selectedConversationId(), std::nullopt) << "to come by selects nothing";

    struct Case {
        int key;
        QString selected;
    };
    const std::vector<Case> cases{
        {Qt::Key_Return, u"c0"_s}, {Qt::Key_Down, u"c1"_s},  {Qt::Key_Up, u"c0"_s},   {Qt::Key_Up, u"c0"_s},
        {Qt::Key_End, u"c99"_s},   {Qt::Key_Down, u"c99"_s}, {Qt::Key_Home, u"c0"_s},
    };
    for (const Case& each : cases) {
        QTest::keyClick(&list(), static_cast<Qt::Key>(each.key));
        EXPECT_EQ(session->selectedConversationId(), each.selected) << each.key;
    }
    QTest::keyClick(&list(), Qt::Key_PageDown);
    const int page = list().currentIndex().row();
    EXPECT_GT(page, 3);
    EXPECT_LT(page, 12);
    QTest::keyClick(&list(), Qt::Key_PageUp);
    EXPECT_EQ(session->selectedConversationId(), u"c0"_s);
    QTest::keyClick(&list(), 'z');
    EXPECT_EQ(session->selectedConversationId(), u"c40"_s);
}

TEST_F(ConversationListViewTest, StaysWhereItIsScrolledToWhileRowsComeAndGo)
{
    sessionWithMany(100);
    show();
    const auto topRow = [&] {
        return list().indexAt({5, 1}).data(ConversationListModel::conversationIdRole).toString();
    };
    list().verticalScrollBar()->setValue(40 * list().visualRect(list().model()->index(0, 0)).height());
    ASSERT_EQ(topRow(), u"c40"_s);
    deliverMessage(u"c80"_s, minutesAgo(0));
    deliver(makeConversation(u"new"_s, 0));
    settle();
    EXPECT_EQ(topRow(), u"c40"_s);
    deliverMessage(u"c40"_s, minutesAgo(0));
    settle();
    EXPECT_EQ(topRow(), u"c39"_s) << "a row that jumps to the top takes nobody along";

    list().verticalScrollBar()->setValue(0);
    deliverMessage(u"c70"_s, minutesAgo(-1));
    settle();
    EXPECT_EQ(topRow(), u"c70"_s) << "at the top, news come into sight";

    list().verticalScrollBar()->setValue(500);
    session->setProductFilter(u"p1"_s);
    settle();
    EXPECT_EQ(list().verticalScrollBar()->value(), 0) << "another list begins at its beginning";
}

TEST_F(ConversationListViewTest, PaintsOnlyWhatIsInSight)
{
    sessionWithMany(100'000);
    show();
    CountingDelegate counting(list().itemDelegate());
    list().setItemDelegate(&counting);
    QTest::qWait(1);
    const int inSight =
        list().viewport()->height() / list().visualRect(list().model()->index(0, 0)).height() + 2;
    const auto costOf = [&](const std::function<void()>& action) {
        QCoreApplication::processEvents();
        counting.paints = 0;
        action();
        settle();
        QCoreApplication::processEvents();
        return counting.paints;
    };
    EXPECT_LE(costOf([&] { deliverMessage(u"c99999"_s, minutesAgo(0)); }), 2 * inSight);
    EXPECT_EQ(costOf([&] { deliverTyping(u"c50000"_s, u"far away"_s); }), 0);
    EXPECT_EQ(costOf([&] { deliverTyping(u"c1"_s, u"in sight"_s); }), 1);
    EXPECT_LE(costOf([&] { QTest::keyClick(&list(), Qt::Key_End); }), 2 * inSight);
    EXPECT_LE(costOf([&] { session->setStatusFilter(ConversationStatus::closed); }), 2 * inSight);
    EXPECT_EQ(counting.sizeHints, 0);
    list().setItemDelegate(nullptr);
}

} // namespace orvia::test
