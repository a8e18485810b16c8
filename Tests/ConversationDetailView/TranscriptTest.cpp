#include "DetailFixture.h"

namespace orvia::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class TranscriptTest : public DetailFixture {
protected:
    void event(const QString& from, const QString& preview, const QString& agentName = {})
    {
        SocketEvent typing;
        typing.type = u"typing"_s;
        typing.conversationId = conversation.id;
        typing.from = from;
        typing.preview = preview;
        if (from == u"agent"_s) {
            typing.agentId = u"a2"_s;
            typing.agentName = agentName;
        }
        session->handle(typing);
        settle();
    }

    Message at(const QString& id, MessageSender sender, std::chrono::seconds offset)
    {
        Message message = makeMessage(id, u"c1"_s, sender, id);
        message.createdAt = clock - 24h + offset;
        return message;
    }
};

TEST_F(TranscriptTest, spacesAndDividesRows)
{
    signInWith(conversation,
               {at(u"a"_s, MessageSender::visitor, 0s), at(u"b"_s, MessageSender::visitor, 600s),
                at(u"c"_s, MessageSender::agent, 601s), at(u"d"_s, MessageSender::agent, 1202s),
                at(u"e"_s, MessageSender::agent, 1203s)});
    open();
    const struct {
        int spacing;
        bool divider;
        bool joinsPrevious;
        bool joinsNext;
    } expected[] = {{0, false, false, true},
                    {3, false, true, false},
                    {12, false, false, false},
                    {0, true, false, true},
                    {3, false, true, false}};
    ASSERT_EQ(transcript().rowCount(), 5);
    for (qsizetype i = 0; i < 5; ++i) {
        SCOPED_TRACE(i);
        const TranscriptRow row = transcript().row(i);
        EXPECT_EQ(row.topSpacing, expected[i].spacing);
        EXPECT_EQ(!row.divider.isEmpty(), expected[i].divider);
        EXPECT_EQ(row.joinsPrevious, expected[i].joinsPrevious);
        EXPECT_EQ(row.joinsNext, expected[i].joinsNext);
    }
}

TEST_F(TranscriptTest, captionsCloseRunsOfMailAndTheLastReadAnswer)
{
    std::vector<Message> thread{at(u"a"_s, MessageSender::visitor, 1s),
                                at(u"b"_s, MessageSender::visitor, 2s),
                                at(u"c"_s, MessageSender::visitor, 3s), at(u"d"_s, MessageSender::agent, 4s),
                                at(u"e"_s, MessageSender::agent, 5s)};
    for (int i = 0; i < 3; ++i)
        thread[static_cast<std::size_t>(i)].via = MessageVia::email;
    conversation.visitorLastReadAt = *thread[3].createdAt;
    signInWith(conversation, thread);
    open();
    EXPECT_THAT(spokenRows(), ElementsAre(u"a"_s, u"b"_s, u"c, via email"_s, u"d, Seen"_s, u"e"_s));
    EXPECT_FALSE(transcript().row(3).joinsNext);

    SocketEvent read;
    read.type = u"read"_s;
    read.conversationId = conversation.id;
    read.by = u"visitor"_s;
    read.at = clock;
    session->handle(read);
    settle();
    EXPECT_THAT(spokenRows(), ElementsAre(u"a"_s, u"b"_s, u"c, via email"_s, u"d"_s, u"e, Seen"_s));
    // What shows is what the rows say, not what was laid out before.
    EXPECT_FALSE(transcript().rowLayout(3)->row().showsSeenCaption);
    EXPECT_TRUE(transcript().rowLayout(4)->row().showsSeenCaption);

    Message mail = at(u"f"_s, MessageSender::visitor, 6s);
    mail.via = MessageVia::email;
    receive({mail});
    EXPECT_EQ(transcript().rowLayout(5)->row().spokenName(), u"f, via email"_s);
    mail.id = mail.body = u"g"_s;
    receive({mail});
    EXPECT_EQ(transcript().rowLayout(5)->row().spokenName(), u"f"_s);
}

TEST_F(TranscriptTest, endsWithRatingTypingAndDraftInThisOrder)
{
    timings.typingClear = 30s;
    timings.previewClear = 30s;
    conversation.rating = Rating{4, u"Quick"_s};
    signInWith(conversation, {at(u"a"_s, MessageSender::visitor, 0s)});
    open();
    EXPECT_THAT(spokenRows(), ElementsAre(u"a"_s, u"Rated 4/5, “Quick”"_s));
    event(u"visitor"_s, {});
    EXPECT_THAT(spokenRows(), ElementsAre(u"a"_s, u"Rated 4/5, “Quick”"_s, u"Visitor is typing…"_s));
    event(u"visitor"_s, u"Because"_s);
    event(u"agent"_s, u"The first"_s, u"Dana Whitfield"_s);
    EXPECT_THAT(spokenRows(), ElementsAre(u"a"_s, u"Rated 4/5, “Quick”"_s, u"typing, Because"_s,
                                          u"Dana Whitfield is typing, The first"_s));
    event(u"agent"_s, u"x"_s);
    EXPECT_EQ(transcript().row(3).header, u"A teammate is typing"_s);
    event(u"agent"_s, {});
    EXPECT_EQ(transcript().rowCount(), 3);
}

TEST_F(TranscriptTest, costsWhatIsInSight)
{
    signInWith(conversation, conversationOf(10000));
    open();
    ASSERT_EQ(transcript().rowCount(), 10000);
    const qsizetype perScreen = 60;
    EXPECT_LE(transcript().layoutCount(), perScreen);
    EXPECT_TRUE(transcript().isRowInSight(9999));
    const qsizetype widgets = view->findChildren<QWidget*>().size();
    receive({makeMessage(u"new"_s, u"c1"_s)});
    EXPECT_LE(transcript().layoutCount(), perScreen);
    EXPECT_EQ(view->findChildren<QWidget*>().size(), widgets);
}

TEST_F(TranscriptTest, refreshesOncePerTurnOfTheEventLoop)
{
    signInWith(conversation, conversationOf(5));
    open();
    for (int i = 0; i < 100; ++i) {
        deliver(makeMessage(u"live%1"_s.arg(i), u"c1"_s));
        EXPECT_EQ(transcript().rowCount(), 5);
    }
    settle();
    EXPECT_EQ(transcript().rowCount(), 105);
}

} // namespace
} // namespace orvia::test
