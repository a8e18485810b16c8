#include "DetailFixture.h"

namespace orvia::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::SizeIs;

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

TEST_F(TranscriptTest, namesNotesByTheirAuthor)
{
    Message note = at(u"n"_s, MessageSender::note, 0s);
    note.agentId = u"a2"_s;
    note.mentions = QStringList{u"a1"_s};
    Message unknown = at(u"u"_s, MessageSender::note, 1s);
    unknown.agentId = u"gone"_s;
    signInWith(conversation, {note, unknown});
    open();
    EXPECT_THAT(spokenRows(),
                ElementsAre(u"Internal note · Dana Whitfield, Mentioned you, n"_s, u"Internal note, u"_s));
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
        SocketEvent live;
        live.type = u"message"_s;
        live.conversationId = conversation.id;
        live.message = makeMessage(u"live%1"_s.arg(i), u"c1"_s);
        session->handle(live);
        EXPECT_EQ(transcript().rowCount(), 5);
    }
    settle();
    EXPECT_EQ(transcript().rowCount(), 105);
}

TEST_F(TranscriptTest, survivesHostileTexts)
{
    std::vector<Message> thread;
    const QString texts[] = {
        QString(1000000, u'w'),    QString(200000, u'\n'), u"\u202e\u2066\u2068<b>\u2029\u2028"_s,
        QString(1, QChar(0xd800)), QString(u'\0'),         u"e"_s + QString(5000, QChar(0x0301))};
    for (const QString& text : texts) {
        for (const MessageSender sender :
             {MessageSender::visitor, MessageSender::note, MessageSender::system})
            thread.push_back(makeMessage(u"h%1"_s.arg(thread.size()), u"c1"_s, sender, text));
    }
    signInWith(conversation, thread);
    open({320, 480});
    for (qsizetype i = 0; i < transcript().rowCount(); ++i) {
        transcript().setCurrent({i, TranscriptView::Part::body});
        settle();
        const RowLayout* layout = transcript().rowLayout(i);
        ASSERT_TRUE(layout);
        const int maximum = static_cast<int>(BubbleText::defaultLimit) * 20;
        EXPECT_LT(layout->height(), maximum);
        EXPECT_LE(layout->rect(TranscriptView::Part::body).right(), 320);
    }
}

} // namespace
} // namespace orvia::test
