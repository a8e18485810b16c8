#include "InboxFixture.h"
#include "Views/ConversationListView/SearchResultButton.h"
#include "Views/ConversationListView/SearchResultsList.h"
#include "Views/Widgets/Button.h"
#include "Views/Widgets/TextField.h"

namespace orvia::test {

class SearchColumnTest : public InboxFixture {
protected:
    void SetUp() override
    {
        sessionWith({makeConversation(u"listed"_s)});
        showColumn();
    }

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
};

TEST_F(SearchColumnTest, GoesThroughItsStates)
{
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

TEST_F(SearchColumnTest, OpensAHitByKeyboardAndKeepsTheFocusInTheColumn)
{
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
    EXPECT_TRUE(view->findChild<QWidget*>(u"conversations"_s)->hasFocus());
}

} // namespace orvia::test
