#include "DetailFixture.h"

#include "Theme/ConsoleStyle.h"
#include "Views/ConversationDetailView/ConversationComposer.h"

#include <QApplication>
#include <QScrollBar>

namespace orvia::test {
namespace {

/// A desktop that wants no animations.
class StillStyle : public ConsoleStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override
    {
        return hint == SH_Widget_Animation_Duration ? 0 : ConsoleStyle::styleHint(hint, option, widget, data);
    }
};

class ScrollingTest : public DetailFixture {
protected:
    QScrollBar& bar() { return *transcript().verticalScrollBar(); }
    bool isAtEnd() { return bar().value() == bar().maximum(); }
    /// Scrolls up and answers the row in the middle of the view.
    qsizetype scrollUp()
    {
        bar().setValue(bar().maximum() / 2);
        settle();
        EXPECT_FALSE(transcript().isFollowing());
        return transcript().rowAt(transcript().viewport()->rect().center());
    }
};

TEST_F(ScrollingTest, goesToTheEndWheneverSomethingNewShows)
{
    signInWith(conversationOf(100));
    open();
    const std::function<void()> news[] = {[this] { receive(makeMessage(u"n1"_s, u"c1"_s)); },
                                          [this] { type(u"visitor"_s, {}); },
                                          [this] { type(u"visitor"_s, u"Beca"_s); },
                                          [this] { type(u"agent"_s, u"The"_s); },
                                          [this] { type(u"agent"_s, {}); },
                                          [this] { reload(conversationOf(40)); }};
    for (const auto& happens : news) {
        SCOPED_TRACE(&happens - news);
        scrollUp();
        happens();
        EXPECT_TRUE(transcript().isFollowing());
        EXPECT_TRUE(waitUntil([this] { return isAtEnd(); }));
    }
}

TEST_F(ScrollingTest, animatesUntilTheUserInterruptsUnlessAnimationsAreOff)
{
    signInWith(conversationOf(100));
    open();
    receive(makeMessage(u"n1"_s, u"c1"_s));
    EXPECT_FALSE(isAtEnd());
    EXPECT_TRUE(waitUntil([this] { return isAtEnd(); }));
    scrollUp();
    receive(makeMessage(u"n2"_s, u"c1"_s));
    bar().setValue(100);
    const int value = bar().value();
    spinFor(std::chrono::milliseconds(250));
    EXPECT_EQ(bar().value(), value);
    EXPECT_FALSE(transcript().isFollowing());

    QApplication::setStyle(new StillStyle);
    scrollUp();
    receive(makeMessage(u"n3"_s, u"c1"_s));
    EXPECT_TRUE(isAtEnd());
    QApplication::setStyle(new ConsoleStyle);
}

TEST_F(ScrollingTest, keepsTheReadersPlaceWhateverChangesElsewhere)
{
    signInWith(conversationOf(2000, 400));
    open();
    const qsizetype row = scrollUp();
    const QString id = transcript().rowLayout(row)->row().id;
    const int top = transcript().rowRect(row).top();

    // Rows above turn out to be of another height.
    for (int i = 0; i < 60; ++i)
        bar().setValue(bar().value() - 40);
    for (int i = 0; i < 60; ++i)
        bar().setValue(bar().value() + 40);
    settle();
    EXPECT_EQ(transcript().rowRect(row).top(), top);

    // The composer grows.
    view->composer().setFixedHeight(120);
    settle();
    EXPECT_EQ(transcript().rowRect(row).top(), top);

    // The thread is loaded again.
    reload(conversationOf(2000, 400));
    EXPECT_EQ(transcript().rowLayout(row)->row().id, id);
    EXPECT_EQ(transcript().rowRect(row).top(), top);

    // The column becomes narrower: the row at the top edge stays there.
    const qsizetype first = transcript().rowAt({10, 0});
    for (const int width : {400, 550}) {
        view->resize(width, 700);
        settle();
        EXPECT_EQ(transcript().rowAt({10, 0}), first);
    }
}

TEST_F(ScrollingTest, keepsTheEndInSightThroughEveryChangeOfSize)
{
    signInWith(conversationOf(500, 300));
    open();
    for (const QSize& size : {QSize(320, 480), QSize(900, 300), QSize(550, 700)}) {
        view->resize(size);
        settle();
        EXPECT_TRUE(isAtEnd());
        EXPECT_TRUE(transcript().isRowInSight(499));
    }
    for (const qsizetype row : {0, 250, 499}) {
        transcript().setCurrent({row, TranscriptView::Part::body});
        settle();
        EXPECT_TRUE(transcript().isRowInSight(row)) << row << " is where the keyboard is";
    }

    // A long comment below the last message does not push that out of sight.
    conversation.rating = Rating{1, u"word "_s.repeated(2000)};
    deliver(conversation);
    reload(conversationOf(100));
    EXPECT_TRUE(waitUntil(
        [this] { return transcript().rowRect(99).bottom() + 1 == transcript().viewport()->height(); }));
    EXPECT_FALSE(isAtEnd());
}

} // namespace
} // namespace orvia::test
