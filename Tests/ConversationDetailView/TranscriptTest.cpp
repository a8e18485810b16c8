#include "DetailFixture.h"

#include <QAccessible>

namespace orvia::test {
namespace {

using testing::ElementsAre;

class TranscriptTest : public DetailFixture {
protected:
    QAccessibleInterface& list() { return *QAccessible::queryAccessibleInterface(&transcript()); }

    Message at(const QString& id, MessageSender sender, int seconds, std::optional<MessageVia> via = {})
    {
        Message message = makeMessage(id, u"c1"_s, sender, id);
        message.createdAt = clock - std::chrono::hours(24) + std::chrono::seconds(seconds);
        message.via = via;
        return message;
    }
};

TEST_F(TranscriptTest, captionsCloseRunsOfMailAndTheLastReadAnswer)
{
    const auto mail = [this](const QString& id, int seconds) {
        return at(id, MessageSender::visitor, seconds, MessageVia::email);
    };
    const std::vector<Message> thread{mail(u"a"_s, 1), mail(u"b"_s, 2), at(u"c"_s, MessageSender::agent, 3),
                                      at(u"d"_s, MessageSender::agent, 4)};
    conversation.visitorLastReadAt = *thread[2].createdAt;
    signInWith(thread);
    open();
    EXPECT_THAT(spokenRows(), ElementsAre(u"a"_s, u"b, via email"_s, u"c, Seen"_s, u"d"_s));
    EXPECT_FALSE(transcript().row(2).joinsNext);

    SocketEvent read;
    read.type = u"read"_s;
    read.conversationId = conversation.id;
    read.by = u"visitor"_s;
    read.at = clock;
    session->handle(read);
    settle();
    EXPECT_THAT(spokenRows(), ElementsAre(u"a"_s, u"b, via email"_s, u"c"_s, u"d, Seen"_s));
    // What shows is what the rows say, not what was laid out before.
    EXPECT_FALSE(transcript().rowLayout(2)->row().showsSeenCaption);
    EXPECT_TRUE(transcript().rowLayout(3)->row().showsSeenCaption);
    receive(mail(u"e"_s, 5));
    EXPECT_EQ(transcript().rowLayout(4)->row().spokenName(), u"e, via email"_s);
    receive(mail(u"f"_s, 6));
    EXPECT_EQ(transcript().rowLayout(4)->row().spokenName(), u"e"_s);
}

TEST_F(TranscriptTest, endsWithRatingTypingAndDraftInThisOrder)
{
    conversation.rating = Rating{4, u"Quick"_s};
    signInWith({at(u"a"_s, MessageSender::visitor, 0)});
    open();
    type(u"visitor"_s, {});
    EXPECT_THAT(spokenRows(), ElementsAre(u"a"_s, u"Rated 4/5, “Quick”"_s, u"Visitor is typing…"_s));
    type(u"visitor"_s, u"Because"_s);
    type(u"agent"_s, u"The first"_s, u"Dana Whitfield"_s);
    EXPECT_THAT(spokenRows(), ElementsAre(u"a"_s, u"Rated 4/5, “Quick”"_s, u"typing, Because"_s,
                                          u"Dana Whitfield is typing, The first"_s));
    type(u"agent"_s, u"x"_s);
    EXPECT_EQ(transcript().row(3).header, u"A teammate is typing"_s);
    type(u"agent"_s, {});
    EXPECT_EQ(transcript().rowCount(), 3);
}

TEST_F(TranscriptTest, costsWhatIsInSightAndOneRefreshPerTurnOfTheEventLoop)
{
    signInWith(conversationOf(10000));
    open();
    ASSERT_EQ(transcript().rowCount(), 10000);
    EXPECT_TRUE(transcript().isRowInSight(9999));
    const qsizetype widgets = view->findChildren<QWidget*>().size();
    for (int i = 0; i < 100; ++i) {
        deliver(makeMessage(u"live%1"_s.arg(i), u"c1"_s));
        EXPECT_EQ(transcript().rowCount(), 10000);
    }
    settle();
    EXPECT_EQ(transcript().rowCount(), 10100);
    EXPECT_LE(transcript().layoutCount(), 60);
    EXPECT_EQ(view->findChildren<QWidget*>().size(), widgets);
}

TEST_F(TranscriptTest, isAListToAssistiveToolsThatKnowsItsRowsPlacesAndTexts)
{
    signInWith(conversationOf(10000));
    open();
    EXPECT_EQ(list().childCount(), 10000);
    QAccessibleInterface* last = list().child(9999);
    ASSERT_TRUE(last);
    EXPECT_EQ(list().indexOfChild(last), 9999);
    EXPECT_EQ(last->text(QAccessible::Description), u"10000 of 10000"_s);
    EXPECT_FALSE(last->state().offscreen);
    EXPECT_TRUE(list().child(0)->state().offscreen);
    const QRect rect = last->rect();
    EXPECT_EQ(list().childAt(rect.center().x(), rect.center().y()), last);
    EXPECT_EQ(list().child(10000), nullptr);

    // It outlives rows and views that are gone.
    reload({makeMessage(u"a"_s, u"c1"_s, MessageSender::visitor, u"one two"_s)});
    EXPECT_EQ(list().childCount(), 1);
    EXPECT_EQ(list().child(9999), nullptr);
    QAccessibleTextInterface* text = list().child(0)->textInterface();
    ASSERT_TRUE(text);
    EXPECT_EQ(text->characterCount(), 7);
    EXPECT_EQ(text->text(4, 9000), u"two"_s);
    // Qt asserts that what is told of a selection says where it is.
    text->setSelection(0, 4, 7);
    EXPECT_EQ(transcript().copyableText(), u"two"_s);
    int start = 0;
    int end = 0;
    text->selection(0, &start, &end);
    EXPECT_EQ(std::pair(start, end), std::pair(4, 7));
    EXPECT_EQ(text->offsetAtPoint(text->characterRect(4).center()) / 2, 2);
    view.reset();
}

} // namespace
} // namespace orvia::test
