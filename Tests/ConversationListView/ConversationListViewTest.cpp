#include "Views/ConversationListView/ConversationListView.h"
#include "InboxFixture.h"
#include "Theme/Theme.h"
#include "Views/ConversationListView/SearchResultButton.h"
#include "Views/ConversationListView/SearchResultsList.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/FocusRing.h"
#include "Views/Widgets/TextField.h"

#include <QApplication>
#include <QListView>
#include <QScrollBar>
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QTest>

namespace orvia::test {

namespace {

/// Counts the rows that a list paints.
class CountingDelegate : public QStyledItemDelegate {
public:
    void paint(QPainter*, const QStyleOptionViewItem&, const QModelIndex&) const override { ++paints; }
    mutable int paints = 0;
};

} // namespace

class ConversationListViewTest : public InboxFixture {
protected:
    /// A session with so many conversations, and the inbox column in a window of its own.
    void showMany(int count)
    {
        sessionWithMany(count);
        Theme::shared().apply(*qApp);
        view = std::make_unique<ConversationListView>(*session);
        view->resize(320, 700);
        view->show();
        QApplication::setActiveWindow(view.get());
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        list = view->findChild<QListView*>(u"conversations"_s);
    }

    /// Lets what was delivered reach the rows.
    void settle()
    {
        view->findChild<ConversationListModel*>()->applyChanges();
        QCoreApplication::processEvents();
    }

    QModelIndex indexOf(int row) const { return list->model()->index(row, 0); }

    /// The id of the selected row; empty when no row is selected.
    QString selectedRowId() const
    {
        const QModelIndexList selected = list->selectionModel()->selectedIndexes();
        EXPECT_LE(selected.size(), 1);
        return selected.isEmpty() ? QString() : idAt(selected.first());
    }

    QString shownPage() const { return view->findChild<QStackedWidget*>()->currentWidget()->objectName(); }
    std::size_t listRequests() { return service.requests("GET", "/v1/agent/conversations").size(); }

    SearchField& field() { return *view->findChild<SearchField*>(); }
    const std::vector<SearchResultButton*>& hits() { return view->findChild<SearchResultsList*>()->rows(); }

    /// Types @p text and waits for the answer with three hits.
    void search(const QString& text)
    {
        Conversation closed = makeConversation(u"second"_s);
        closed.status = ConversationStatus::closed;
        service.answer("GET", "/v1/agent/search",
                       answerOf(SearchResponse{{{{makeConversation(u"first"_s), u"a refund"_s, {}},
                                                 {closed, u"Refund!"_s, {}},
                                                 {closed, u"again"_s, {}}}}}));
        field().setFocus(Qt::TabFocusReason);
        QTest::keyClicks(&field(), text);
        ASSERT_TRUE(waitUntil([&] { return hits().size() == 3 && !session->isSearching(); }));
        QCoreApplication::processEvents();
    }

    std::unique_ptr<ConversationListView> view;
    QListView* list = nullptr; ///< belongs to the view
};

TEST_F(ConversationListViewTest, ReloadsOnRequestAndWhenAnotherPageIsNeeded)
{
    showMany(1);
    auto& refresh = *view->findChild<IconButton*>(u"refresh"_s);
    const auto requestsBy = [&](const std::function<void()>& action) {
        const std::size_t before = listRequests();
        action();
        EXPECT_FALSE(refresh.isEnabled());
        QTest::keyClick(view.get(), Qt::Key_F5); // Nothing more while it loads.
        EXPECT_TRUE(waitUntil([&] { return !session->isLoadingList(); }));
        EXPECT_TRUE(refresh.isEnabled());
        return listRequests() - before;
    };
    EXPECT_EQ(requestsBy([&] { QTest::mouseClick(&refresh, Qt::LeftButton); }), 2u);
    EXPECT_EQ(requestsBy([&] { QTest::keyClick(view.get(), Qt::Key_F5); }), 2u);
    EXPECT_EQ(requestsBy([&] { QTest::keyClick(view.get(), Qt::Key_R, Qt::ControlModifier); }), 2u);
    EXPECT_EQ(requestsBy([&] { session->setShowSnoozed(true); }), 2u);
    EXPECT_EQ(requestsBy([&] { session->setQueue(InboxQueue::mine); }), 2u);
    EXPECT_EQ(shownPage(), u"emptyList"_s);

    // By the keyboard the button keeps the focus, which it cannot have while it is disabled.
    view->setFocus();
    refresh.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(requestsBy([&] { QTest::keyClick(&refresh, Qt::Key_Space); }), 2u);
    EXPECT_TRUE(refresh.hasFocus());
    EXPECT_TRUE(FocusRing::isShown(&refresh));
    EXPECT_EQ(requestsBy([&] {
                  QTest::keyClick(&refresh, Qt::Key_Space);
                  view->setFocus();
              }),
              2u);
    EXPECT_TRUE(view->hasFocus()) << "moved meanwhile";

    const std::size_t before = listRequests();
    session->setStatusFilter(ConversationStatus::closed);
    session->setProductFilter(u"p1"_s);
    settle();
    EXPECT_FALSE(session->isLoadingList());
    EXPECT_EQ(listRequests(), before);

    const auto held = service.hold("GET", "/v1/agent/conversations");
    session->setQueue(InboxQueue::unassigned);
    settle();
    EXPECT_EQ(shownPage(), u"conversations"_s) << "nothing is known to be missing while it loads";
    held->answer(answerOf(ConversationsResponse()));
    EXPECT_TRUE(waitUntil([&] { return shownPage() == u"emptyList"_s; }));
}

TEST_F(ConversationListViewTest, BindsTheSelectionBothWaysThroughEveryChangeOfTheRows)
{
    showMany(30);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualRect(indexOf(4)).center());
    EXPECT_EQ(session->selectedConversationId(), u"c4"_s);
    session->setSelectedConversationId(u"c25"_s);
    EXPECT_EQ(selectedRowId(), u"c25"_s);
    EXPECT_TRUE(list->viewport()->rect().contains(list->visualRect(list->currentIndex())))
        << "it comes into sight";
    session->setSelectedConversationId(u"elsewhere"_s);
    EXPECT_EQ(selectedRowId(), QString());
    EXPECT_EQ(session->selectedConversationId(), u"elsewhere"_s);

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
    session->logout();
    EXPECT_EQ(list->model()->rowCount(), 0);
}

TEST_F(ConversationListViewTest, IsUsableByKeyboard)
{
    showMany(100);
    Conversation named = known(u"c40"_s);
    named.visitor.name = u"Zoë"_s;
    deliver(named);
    settle();
    field().setFocus(Qt::TabFocusReason);
    QTest::keyClick(&field(), Qt::Key_Tab);
    EXPECT_TRUE(list->hasFocus()) << "the list follows the search field";
    EXPECT_EQ(session->selectedConversationId(), std::nullopt) << "to come by selects nothing";

    const std::pair<Qt::Key, QString> steps[] = {
        {Qt::Key_Return, u"c0"_s}, {Qt::Key_Up, u"c0"_s}, {Qt::Key_End, u"c99"_s}, {Qt::Key_Z, u"c40"_s}};
    for (const auto& [key, selected] : steps) {
        QTest::keyClick(list, key);
        EXPECT_EQ(session->selectedConversationId(), selected) << key;
    }
}

TEST_F(ConversationListViewTest, StaysWhereItIsScrolledToWhileRowsComeAndGo)
{
    showMany(100);
    const auto topRow = [&] { return idAt(list->indexAt({5, 1})); };
    QScrollBar& bar = *list->verticalScrollBar();
    bar.setValue(40 * list->visualRect(indexOf(0)).height());
    ASSERT_EQ(topRow(), u"c40"_s);
    deliverMessage(u"c80"_s, minutesAgo(0));
    deliver(makeConversation(u"new"_s, 0));
    settle();
    EXPECT_EQ(topRow(), u"c40"_s);
    deliverMessage(u"c40"_s, minutesAgo(0));
    settle();
    EXPECT_EQ(topRow(), u"c39"_s) << "a row that jumps to the top takes nobody along";

    bar.setValue(0);
    deliverMessage(u"c70"_s, minutesAgo(-1));
    settle();
    EXPECT_EQ(topRow(), u"c70"_s) << "at the top, news come into sight";

    bar.setValue(500);
    session->setProductFilter(u"p1"_s);
    settle();
    EXPECT_EQ(bar.value(), 0) << "another list begins at its beginning";
}

TEST_F(ConversationListViewTest, PaintsOnlyWhatIsInSight)
{
    showMany(10'000);
    CountingDelegate counting;
    QAbstractItemDelegate* const usual = list->itemDelegate();
    list->setItemDelegate(&counting);
    QTest::qWait(1);
    const auto costOf = [&](const std::function<void()>& action) {
        settle();
        counting.paints = 0;
        action();
        settle();
        QCoreApplication::processEvents();
        return counting.paints;
    };
    EXPECT_EQ(costOf([&] { deliverTyping(u"c5000"_s, u"far away"_s); }), 0);
    EXPECT_EQ(costOf([&] { deliverTyping(u"c1"_s, u"in sight"_s); }), 1);
    list->setItemDelegate(usual);
}

TEST_F(ConversationListViewTest, TheSearchGoesThroughItsStates)
{
    showMany(1);
    QTest::keyClicks(&field(), u"  "_s);
    EXPECT_EQ(shownPage(), u"conversations"_s) << "spaces are no search";
    session->clearSearch();
    QTest::keyClicks(&field(), u"r"_s);
    EXPECT_EQ(shownPage(), u"noResults"_s) << "one letter finds nothing";

    const auto held = service.hold("GET", "/v1/agent/search");
    QTest::keyClicks(&field(), u"ef"_s);
    EXPECT_EQ(shownPage(), u"searching"_s);
    EXPECT_FALSE(field().clearButton()->isVisible()) << "the spinner stands there";
    held->answer(answerOf(SearchResponse{}));
    ASSERT_TRUE(waitUntil([&] { return shownPage() == u"noResults"_s; }));
    EXPECT_TRUE(field().clearButton()->isVisible());

    search(u"und"_s);
    const auto heldAgain = service.hold("GET", "/v1/agent/search");
    QTest::keyClicks(&field(), u"s"_s);
    EXPECT_EQ(shownPage(), u"searchResults"_s) << "older hits stay until the answer";
    heldAgain->answer(refusal(500, "No index"));
    ASSERT_TRUE(waitUntil([&] { return shownPage() == u"noResults"_s; }));
    EXPECT_EQ(session->banner(), u"No index"_s);

    QTest::mouseClick(field().clearButton(), Qt::LeftButton);
    EXPECT_EQ(session->searchText(), QString());
    EXPECT_EQ(field().text(), QString());
    EXPECT_EQ(shownPage(), u"conversations"_s);
}

TEST_F(ConversationListViewTest, OpensAHitByKeyboardAndKeepsTheFocusInTheColumn)
{
    showMany(1);
    search(u"refund"_s);
    QTest::keyClick(&field(), Qt::Key_Down);
    EXPECT_TRUE(hits()[0]->hasFocus());
    QTest::keyClick(hits()[0], Qt::Key_End);
    QTest::keyClick(hits()[2], Qt::Key_Down);
    EXPECT_TRUE(hits()[2]->hasFocus());
    QTest::keyClick(hits()[2], Qt::Key_Up);
    EXPECT_TRUE(hits()[1]->hasFocus());
    // One hit only takes part in the tab order.
    QTest::keyClick(hits()[1], Qt::Key_Backtab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_TRUE(hits()[1]->hasFocus());
    QTest::keyClick(hits()[1], Qt::Key_Return);
    EXPECT_EQ(session->selectedConversationId(), u"second"_s);
    EXPECT_EQ(session->statusFilter(), ConversationStatus::closed);
    EXPECT_TRUE(list->hasFocus());
}

} // namespace orvia::test
