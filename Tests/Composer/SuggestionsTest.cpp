#include "ComposerFixture.h"

#include "Views/ConversationDetailView/Composer/SuggestionList.h"

#include <QAccessible>

namespace orvia::test {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

CannedResponse makeCanned(const QString& shortcut)
{
    return {shortcut, {}, shortcut, u"The body of "_s + shortcut, {}};
}

class SuggestionsTest : public ComposerFixture {
protected:
    void openWithCanned()
    {
        open();
        composer->setCanned({makeCanned(u"greet"_s), makeCanned(u"grow"_s), makeCanned(u"group"_s)});
    }
    /// The leads of the rows on show, from top to bottom; a row of which nothing is seen is left out.
    QStringList rows()
    {
        QStringList leads;
        for (const auto* list : composer->findChildren<SuggestionList*>()) {
            for (int index = 0; list->isVisible() && index < list->rowCount(); ++index)
                leads.append(list->row(index)->lead());
        }
        return leads;
    }
    SuggestionRow& row(int index)
    {
        auto* mentions = composer->findChild<MentionSuggestionList*>();
        auto* canned = composer->findChild<CannedSuggestionList*>();
        return mentions->rowCount() > 0 ? *mentions->row(index) : *canned->row(index);
    }
    static QString description(QWidget& widget)
    {
        return QAccessible::queryAccessibleInterface(&widget)->text(QAccessible::Description);
    }
};

TEST_F(SuggestionsTest, OffersTheTeammatesOfTheProductWhileANoteNamesOne)
{
    open();
    composer->setCanned({makeCanned(u"x @an"_s)});
    type(u"Hi @"_s);
    EXPECT_THAT(rows(), IsEmpty()) << "a reply mentions nobody";
    click(button(u"noteModeButton"_s));
    EXPECT_THAT(rows(), ElementsAre(u"@Anna Berg"_s, u"@Joanna Reyes"_s));
    EXPECT_EQ(description(row(0)), u"Return inserts this"_s);
    EXPECT_EQ(description(row(1)), QString());
    EXPECT_EQ(description(field()), u"Return inserts @Anna Berg"_s);
    field().setText(u"/x @an"_s);
    EXPECT_THAT(rows(), ElementsAre(u"@Anna Berg"_s, u"@Joanna Reyes"_s)) << "mentions go first";
    field().setText(u"/x"_s);
    EXPECT_THAT(rows(), ElementsAre(u"/x @an"_s));

    // They follow the conversation and the teammates.
    field().setText(u"@"_s);
    Conversation moved = makeConversation(u"c1"_s);
    moved.productId = u"p2"_s;
    deliver(moved);
    EXPECT_THAT(rows(), ElementsAre(u"@Zoe Quist"_s));
    service.always("GET", "/v1/agent/teammates", refusal(500, "no"));
    runTask(session->loadAssignableAgents());
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_EQ(description(field()), QString());
}

TEST_F(SuggestionsTest, IsWalkedThroughByTheKeyboard)
{
    openWithCanned();
    elsewhere->setFocus();
    field().setText(u"/gr"_s);
    QCoreApplication::processEvents();
    EXPECT_EQ(rows().size(), 3);
    EXPECT_TRUE(elsewhere->hasFocus()) << "the list takes no focus when it appears";
    field().setFocus();
    press(Qt::Key_Up);
    EXPECT_TRUE(row(2).hasFocus()) << "the row next to the field";
    for (int step = 0; step < 3; ++step)
        press(Qt::Key_Up);
    EXPECT_TRUE(row(0).hasFocus());
    press(Qt::Key_Escape);
    EXPECT_TRUE(field().hasFocus());
    press(Qt::Key_Tab);
    press(Qt::Key_Tab);
    EXPECT_TRUE(row(1).hasFocus());
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_TRUE(field().hasFocus());

    // What is typed on a row goes on in the draft.
    press(Qt::Key_Up);
    press(Qt::Key_O);
    EXPECT_EQ(text(), u"/gro"_s);
    EXPECT_TRUE(field().hasFocus());
    press(Qt::Key_Up);
    press(Qt::Key_Backspace);
    EXPECT_EQ(text(), u"/gr"_s);

    // Up leaves the draft from its first line only.
    click(button(u"noteModeButton"_s));
    field().setText(u"first\n@"_s);
    press(Qt::Key_Up);
    EXPECT_TRUE(field().hasFocus());
    EXPECT_EQ(field().textCursor().blockNumber(), 0);
    press(Qt::Key_Up);
    EXPECT_TRUE(row(1).hasFocus());
}

TEST_F(SuggestionsTest, AListThatVanishesOrChangesUnderTheFocusHandsItToTheField)
{
    openWithCanned();
    type(u"/gr"_s);
    press(Qt::Key_Up);
    composer->setCanned({makeCanned(u"grand"_s)});
    EXPECT_TRUE(field().hasFocus());
    press(Qt::Key_Up);
    composer->setCanned({makeCanned(u"grand"_s)});
    EXPECT_TRUE(row(0).hasFocus()) << "nothing changed";
    composer->setCanned({});
    EXPECT_TRUE(field().hasFocus());
}

} // namespace

} // namespace orvia::test
