#include "InboxFixture.h"
#include "Theme/Theme.h"
#include "Views/ConversationListView/ConversationListView.h"
#include "Views/ConversationListView/SearchResultButton.h"
#include "Views/ConversationListView/SearchResultsList.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/TextField.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QStackedWidget>
#include <QTest>

namespace orvia::test {

class SearchColumnTest : public InboxFixture {
protected:
    void SetUp() override
    {
        Theme::shared().apply(*qApp);
        sessionWith({makeConversation(u"listed"_s)});
        view = std::make_unique<ConversationListView>(*session);
        view->resize(320, 700);
        view->show();
        QApplication::setActiveWindow(view.get());
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    }

    void TearDown() override { view.reset(); }

    SearchField& field() { return *view->findChild<SearchField*>(); }
    const std::vector<SearchResultButton*>& hits() { return view->findChild<SearchResultsList*>()->rows(); }
    QString shownPage() { return view->findChild<QStackedWidget*>()->currentWidget()->objectName(); }

    SearchResult hit(const QString& id, const QString& snippet, ConversationStatus status)
    {
        SearchResult result;
        result.conversation = makeConversation(id, 3);
        result.conversation.status = status;
        result.snippet = snippet;
        return result;
    }

    /// Types @p text and waits for the answer with three hits.
    void search(const QString& text)
    {
        service.answer(
            "GET", "/v1/agent/search",
            answerOf(SearchResponse{{{hit(u"first"_s, u"a refund"_s, ConversationStatus::open),
                                      hit(u"second"_s, u"Refund!"_s, ConversationStatus::closed),
                                      hit(u"second"_s, u"again"_s, ConversationStatus::closed)}}}));
        field().setFocus(Qt::TabFocusReason);
        QTest::keyClicks(&field(), text);
        ASSERT_TRUE(waitUntil([&] { return hits().size() == 3; }));
        ASSERT_TRUE(waitUntil([&] { return !session->isSearching(); }));
        QCoreApplication::processEvents();
    }

    std::unique_ptr<ConversationListView> view;
};

TEST_F(SearchColumnTest, GoesThroughItsStates)
{
    EXPECT_EQ(field().placeholderText(), u"Search conversations"_s);
    EXPECT_EQ(field().clearButton()->accessibleName(), u"Clear search"_s);
    QTest::keyClicks(&field(), u"  "_s);
    EXPECT_EQ(shownPage(), u"conversations"_s) << "spaces are no search";
    session->clearSearch();
    QTest::keyClicks(&field(), u"r"_s);
    EXPECT_EQ(shownPage(), u"noResults"_s) << "one letter finds nothing";

    const auto held = service.hold("GET", "/v1/agent/search");
    QTest::keyClicks(&field(), u"ef"_s);
    EXPECT_EQ(shownPage(), u"searching"_s);
    EXPECT_TRUE(field().isSearching());
    EXPECT_FALSE(field().clearButton()->isVisible()) << "the spinner stands there";
    held->answer(answerOf(SearchResponse{}));
    ASSERT_TRUE(waitUntil([&] { return shownPage() == u"noResults"_s; }));
    EXPECT_TRUE(field().clearButton()->isVisible());

    search(u"und"_s);
    EXPECT_EQ(shownPage(), u"searchResults"_s);
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

TEST_F(SearchColumnTest, OpensAHitByKeyboardAndKeepsTheFocusInTheColumn)
{
    search(u"refund"_s);
    QTest::keyClick(&field(), Qt::Key_Down);
    EXPECT_TRUE(hits()[0]->hasFocus());
    QTest::keyClick(hits()[0], Qt::Key_End);
    EXPECT_TRUE(hits()[2]->hasFocus());
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
    EXPECT_TRUE(view->findChild<QWidget*>(u"conversations"_s)->hasFocus());
}

TEST_F(SearchColumnTest, TellsAssistiveToolsOfTheHits)
{
    search(u"refund"_s);
    QAccessibleInterface* first = QAccessible::queryAccessibleInterface(hits()[0]);
    EXPECT_EQ(first->role(), QAccessible::Button);
    EXPECT_EQ(first->text(QAccessible::Name), u"Visitor first, 3 minutes ago, a refund, Larkspur Coffee"_s);
    QAccessibleInterface* list = first->parent();
    EXPECT_EQ(list->role(), QAccessible::List);
    EXPECT_EQ(list->text(QAccessible::Name), u"Search results"_s);
    EXPECT_EQ(list->childCount(), 3);
    EXPECT_EQ(list->indexOfChild(QAccessible::queryAccessibleInterface(hits()[2])), 2);
    QAccessible::queryAccessibleInterface(hits()[1])->actionInterface()->doAction(
        QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(waitUntil([&] { return session->selectedConversationId() == u"second"_s; }));
}

} // namespace orvia::test
