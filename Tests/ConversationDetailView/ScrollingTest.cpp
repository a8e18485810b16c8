#include "DetailFixture.h"

#include "Theme/ConsoleStyle.h"
#include "Views/ConversationDetailView/ConversationComposer.h"

#include <QApplication>
#include <QScrollBar>

namespace orvia::test {
namespace {

/// A desktop that says how long animations take.
class MotionStyle : public ConsoleStyle {
public:
    explicit MotionStyle(int milliseconds)
        : m_milliseconds(milliseconds)
    {
    }

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override
    {
        return hint == SH_Widget_Animation_Duration ? m_milliseconds
                                                    : ConsoleStyle::styleHint(hint, option, widget, data);
    }

private:
    const int m_milliseconds;
};

class ScrollingTest : public DetailFixture {
protected:
    ScrollingTest()
    {
        timings.typingClear = std::chrono::seconds(30);
        timings.previewClear = std::chrono::seconds(30);
    }

    QScrollBar& bar() { return *transcript().verticalScrollBar(); }
    bool isAtEnd() { return bar().value() == bar().maximum(); }
    bool comesToTheEnd()
    {
        return waitUntil([this] { return isAtEnd(); });
    }
    /// Scrolls up and answers the row in the middle of the view.
    qsizetype scrollUp()
    {
        bar().setValue(bar().maximum() / 2);
        settle();
        EXPECT_FALSE(transcript().isFollowing());
        return transcript().rowAt(transcript().viewport()->rect().center());
    }
    void type(const QString& from, const QString& preview)
    {
        SocketEvent event;
        event.type = u"typing"_s;
        event.conversationId = conversation.id;
        event.from = from;
        event.preview = preview;
        event.agentId = u"a2"_s;
        session->handle(event);
        settle();
    }
};

TEST_F(ScrollingTest, standsAtTheBottomWhileShort)
{
    signInWith(conversation, conversationOf(1, 5));
    open();
    EXPECT_EQ(bar().maximum(), 0);
    EXPECT_EQ(transcript().rowRect(0).bottom() + 1, transcript().viewport()->height() - 12);
}

TEST_F(ScrollingTest, goesToTheEndWheneverSomethingNewShows)
{
    signInWith(conversation, conversationOf(100));
    open();
    const struct {
        const char* name;
        std::function<void()> happens;
    } news[] = {
        {"message", [this] { receive({makeMessage(u"n1"_s, u"c1"_s)}); }},
        {"typing", [this] { type(u"visitor"_s, {}); }},
        {"preview", [this] { type(u"visitor"_s, u"Beca"_s); }},
        {"longer preview", [this] { type(u"visitor"_s, u"Because"_s); }},
        {"draft", [this] { type(u"agent"_s, u"The"_s); }},
        {"draft gone", [this] { type(u"agent"_s, {}); }},
        {"reload with another count", [this] { reload(conversationOf(40)); }},
    };
    for (const auto& item : news) {
        SCOPED_TRACE(item.name);
        scrollUp();
        item.happens();
        EXPECT_TRUE(transcript().isFollowing());
        EXPECT_TRUE(comesToTheEnd());
    }
}

TEST_F(ScrollingTest, animatesWhatIsNewUnlessAnimationsAreOff)
{
    signInWith(conversation, conversationOf(100));
    open();
    for (const bool fromTheEnd : {true, false}) {
        if (!fromTheEnd)
            scrollUp();
        receive({makeMessage(u"n%1"_s.arg(fromTheEnd), u"c1"_s)});
        EXPECT_FALSE(isAtEnd());
        EXPECT_TRUE(comesToTheEnd());
    }

    QApplication::setStyle(new MotionStyle(0));
    scrollUp();
    receive({makeMessage(u"still"_s, u"c1"_s)});
    EXPECT_TRUE(isAtEnd());
}

TEST_F(ScrollingTest, keepsTheTargetAboveALongComment)
{
    conversation.rating = Rating{1, u"word "_s.repeated(2000)};
    signInWith(conversation, conversationOf(100));
    open();
    EXPECT_FALSE(isAtEnd());
    const QRect last = transcript().rowRect(99);
    EXPECT_EQ(last.bottom() + 1, transcript().viewport()->height());
}

TEST_F(ScrollingTest, keepsTheReadersPlaceWhateverChangesElsewhere)
{
    signInWith(conversation, conversationOf(2000, 400));
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
    view->resize(400, 700);
    settle();
    EXPECT_EQ(transcript().rowAt({10, 0}), first);
    view->resize(550, 700);
    settle();
    EXPECT_EQ(transcript().rowAt({10, 0}), first);
}

TEST_F(ScrollingTest, staysAtTheEndThroughEveryChangeOfSize)
{
    signInWith(conversation, conversationOf(500, 300));
    open();
    for (const QSize& size : {QSize(320, 480), QSize(900, 300), QSize(550, 700)}) {
        view->resize(size);
        settle();
        EXPECT_TRUE(isAtEnd());
        EXPECT_TRUE(transcript().isRowInSight(499));
    }
}

TEST_F(ScrollingTest, bringsTheRowIntoSightThatTheKeyboardReaches)
{
    signInWith(conversation, conversationOf(300));
    open();
    for (const qsizetype row : {0, 150, 299}) {
        transcript().setCurrent({row, TranscriptView::Part::body});
        settle();
        EXPECT_TRUE(transcript().isRowInSight(row)) << row;
    }
}

TEST_F(ScrollingTest, letsTheUserInterruptAnAnimatedScroll)
{
    signInWith(conversation, conversationOf(500));
    open();
    scrollUp();
    receive({makeMessage(u"n1"_s, u"c1"_s)});
    bar().setValue(100);
    const int value = bar().value();
    spinFor(std::chrono::milliseconds(250));
    EXPECT_EQ(bar().value(), value);
    EXPECT_FALSE(transcript().isFollowing());
}

} // namespace
} // namespace orvia::test
