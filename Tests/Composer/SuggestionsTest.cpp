#include "ComposerFixture.h"

#include <QAccessible>

namespace orvia::test {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SuggestionsTest : public ComposerFixture {
protected:
    void openNote()
    {
        open();
        click(button(u"noteModeButton"_s));
    }
    void openWithCanned()
    {
        open();
        composer->setCanned({makeCanned(u"greet"_s, u"Hello there"_s), makeCanned(u"grow"_s, u"Growing"_s),
                             makeCanned(u"x"_s, u"Great to see you"_s), makeCanned(u"sorry"_s, u"Sorry"_s)});
    }
};

TEST_F(SuggestionsTest, OffersTheTeammatesOfTheProductWhileANoteNamesOne)
{
    open();
    type(u"Hi @"_s);
    EXPECT_THAT(rows(), IsEmpty()) << "a reply mentions nobody";
    click(button(u"noteModeButton"_s));
    EXPECT_THAT(rows(), ElementsAre(u"@Anna Berg"_s, u"@Joanna Reyes"_s));
    type(u"REY"_s);
    EXPECT_THAT(rows(), ElementsAre(u"@Joanna Reyes"_s));
    type(u"x"_s);
    EXPECT_THAT(rows(), IsEmpty());
    press(Qt::Key_Backspace);
    EXPECT_THAT(rows(), ElementsAre(u"@Joanna Reyes"_s));
    click(button(u"noteModeButton"_s));
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(SuggestionsTest, FollowTeammatesAndConversationAsTheyChange)
{
    openNote();
    type(u"@"_s);
    EXPECT_EQ(rows().size(), 2);
    Conversation moved = makeConversation(u"c1"_s);
    moved.productId = u"p2"_s;
    deliver(moved);
    EXPECT_THAT(rows(), ElementsAre(u"@Zoe Quist"_s));
    service.always("GET", "/v1/agent/teammates", refusal(500, "no"));
    runTask(session->loadAssignableAgents());
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(SuggestionsTest, OffersCannedResponsesWhoseShortcutOrBodyBeginsSo)
{
    openWithCanned();
    type(u"/GR"_s);
    EXPECT_THAT(rows(), ElementsAre(u"/greet"_s, u"/grow"_s, u"/x"_s));
    type(u"e"_s);
    EXPECT_THAT(rows(), ElementsAre(u"/greet"_s, u"/x"_s));
    composer->setCanned({makeCanned(u"green"_s, u"Green"_s)});
    EXPECT_THAT(rows(), ElementsAre(u"/green"_s));
    field().setText(u" /gre"_s);
    EXPECT_THAT(rows(), IsEmpty());
    composer->setCanned(std::vector<CannedResponse>(9, makeCanned(u"many"_s, u"Many"_s)));
    field().setText(u"/"_s);
    EXPECT_EQ(rows().size(), 6);
}

TEST_F(SuggestionsTest, ShowsMentionsAloneWhenBothWouldFit)
{
    openWithCanned();
    composer->setCanned({makeCanned(u"x @an"_s, u"X"_s)});
    click(button(u"noteModeButton"_s));
    type(u"/x @an"_s);
    EXPECT_THAT(rows(), ElementsAre(u"@Anna Berg"_s, u"@Joanna Reyes"_s));
    type(u"q"_s);
    field().setText(u"/x "_s);
    EXPECT_THAT(rows(), ElementsAre(u"/x @an"_s));
}

TEST_F(SuggestionsTest, NeverTakesTheFocusWhenItAppears)
{
    openWithCanned();
    elsewhere->setFocus();
    field().setText(u"/gr"_s);
    QCoreApplication::processEvents();
    EXPECT_EQ(rows().size(), 3);
    EXPECT_TRUE(elsewhere->hasFocus());
    field().setText({});
    QCoreApplication::processEvents();
    EXPECT_TRUE(elsewhere->hasFocus());
}

TEST_F(SuggestionsTest, IsWalkedThroughByTheKeyboard)
{
    openWithCanned();
    type(u"/gr"_s);
    press(Qt::Key_Up);
    EXPECT_TRUE(row(2).hasFocus()) << "the row next to the field";
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    EXPECT_TRUE(row(0).hasFocus());
    press(Qt::Key_Escape);
    EXPECT_TRUE(field().hasFocus());
    EXPECT_EQ(rows().size(), 3);
    press(Qt::Key_Tab);
    EXPECT_TRUE(row(0).hasFocus());
    press(Qt::Key_Tab);
    EXPECT_TRUE(row(1).hasFocus());
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_TRUE(field().hasFocus());
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    press(Qt::Key_Return);
    EXPECT_EQ(text(), u"Growing"_s);
    EXPECT_TRUE(field().hasFocus());
    EXPECT_TRUE(service.requests("POST", messagesPath).empty());
}

TEST_F(SuggestionsTest, UpMovesTheCursorWhereThereIsALineAbove)
{
    openNote();
    field().setText(u"first\n@"_s);
    EXPECT_EQ(rows().size(), 2);
    press(Qt::Key_Up);
    EXPECT_TRUE(field().hasFocus());
    EXPECT_EQ(field().textCursor().blockNumber(), 0);
    press(Qt::Key_Up);
    EXPECT_TRUE(row(1).hasFocus());
}

TEST_F(SuggestionsTest, TypingOnARowGoesOnInTheDraft)
{
    openWithCanned();
    type(u"/gr"_s);
    press(Qt::Key_Up);
    press(Qt::Key_O);
    EXPECT_EQ(text(), u"/gro"_s);
    EXPECT_TRUE(field().hasFocus());
    press(Qt::Key_Up);
    press(Qt::Key_Backspace);
    EXPECT_EQ(text(), u"/gr"_s);
    EXPECT_TRUE(field().hasFocus());
}

TEST_F(SuggestionsTest, AListThatVanishesOrChangesUnderTheFocusHandsItToTheField)
{
    openWithCanned();
    type(u"/gr"_s);
    press(Qt::Key_Up);
    composer->setCanned({makeCanned(u"grand"_s, u"Grand"_s)});
    EXPECT_TRUE(field().hasFocus());
    press(Qt::Key_Up);
    ASSERT_TRUE(row(0).hasFocus());
    composer->setCanned({makeCanned(u"grand"_s, u"Grand"_s)});
    EXPECT_TRUE(row(0).hasFocus()) << "nothing changed";
    composer->setCanned({});
    EXPECT_TRUE(field().hasFocus());
}

TEST_F(SuggestionsTest, LongTextsStayOnOneLineInsideTheRow)
{
    open();
    composer->setCanned({makeCanned(u"sig"_s, u"Kind regards\n\nMara Ellison "_s.repeated(400))});
    type(u"/sig"_s);
    QCoreApplication::processEvents();
    EXPECT_EQ(composer->width(), 550);
    EXPECT_EQ(row(0).height(), row(0).sizeHint().height());
    EXPECT_TRUE(row(0).accessibleName().endsWith(u"Mara Ellison "_s.repeated(1)))
        << "assistive tools read the whole text";
    EXPECT_GT(row(0).accessibleName().size(), 10'000);
}

TEST_F(SuggestionsTest, FillsTheRowThatReturnInserts)
{
    openWithCanned();
    type(u"/gr"_s);
    QCoreApplication::processEvents();
    const QColor filled = Theme::color(ColorRole::popoverSelection);
    const auto background = [this](int index) {
        const QPoint place =
            row(index).mapTo(composer, QPoint(row(index).width() - 4, row(index).height() / 2));
        return composer->grab().toImage().pixelColor(place);
    };
    EXPECT_EQ(background(0), filled);
    EXPECT_NE(background(1), filled);
    EXPECT_NE(background(2), filled);
}

} // namespace

} // namespace orvia::test
