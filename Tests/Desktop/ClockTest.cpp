#include "Session/SessionFixture.h"
#include "Views/ConversationListView/ConversationListModel.h"
#include "Views/ConversationListView/TimeTick.h"

namespace orvia::test {
namespace {

using namespace std::chrono_literals;

/// The clock goes back by an hour while the console runs, as it does when somebody corrects it.
class ClockSetBack : public SessionFixture {
protected:
    void setBack() { clock -= 1h; }
};

TEST_F(ClockSetBack, EndsTypingMarksAndBannersAllTheSame)
{
    scriptInbox({makeConversation(u"c1"_s)});
    signIn();
    SocketEvent typing;
    typing.type = u"typing"_s;
    typing.conversationId = u"c1"_s;
    typing.from = u"visitor"_s;
    typing.preview = u"Hello"_s;
    session->handle(typing);
    session->showBanner(u"Something failed"_s);
    ASSERT_TRUE(session->typingConversations().contains(u"c1"_s));
    setBack();
    EXPECT_TRUE(waitUntil([this] {
        return session->typingConversations().isEmpty() && session->typingPreviews().isEmpty()
               && !session->banner();
    }));
}

TEST_F(ClockSetBack, SilencesOwnTypingNoLongerThanTheDraft)
{
    scriptInbox({makeConversation(u"c1"_s)});
    connectLive();
    const auto frames = [this] { return service.channel()->texts().filter(u"\"typing\""_s); };
    session->sendTyping(u"c1"_s, u"first draft"_s);
    setBack();
    session->sendTyping(u"c1"_s, u"the same draft, longer"_s);
    session->sendTyping(u"c1"_s, {});
    session->sendTyping(u"c1"_s, u"second draft"_s);
    ASSERT_TRUE(waitUntil([&] { return !frames().filter(u"second draft"_s).isEmpty(); }));
    EXPECT_EQ(frames().size(), 3) << "first, stop, second";
}

TEST_F(ClockSetBack, KeepsRelativeTimesGoing)
{
    TimeTick tick([this] { return clock; }, 60s);
    int ticks = 0;
    QObject::connect(&tick, &TimeTick::ticked, [&] { ++ticks; });
    tick.request(clock - 20min - 60s + 10ms);
    ASSERT_TRUE(waitUntil([&] { return ticks == 1; }));
    setBack();
    tick.request(clock - 20min - 10s);
    EXPECT_EQ(tick.due(), clock + 50s) << "not an hour later";
}

TEST_F(ClockSetBack, HidesASnoozedConversationUntilTheClockSaysSo)
{
    scriptInbox({});
    signIn();
    SocketEvent event;
    event.type = u"conversation"_s;
    event.conversation = makeConversation(u"c1"_s);
    event.conversation->snoozedUntil = clock + 30ms;
    session->handle(event);
    ConversationListModel model(*session, [this] { return clock; });
    ASSERT_EQ(session->conversations().size(), 1);
    EXPECT_EQ(model.rowCount(), 0);
    setBack();
    // Its timer runs out meanwhile and finds that it is too early.
    spinFor(100ms);
    EXPECT_EQ(model.rowCount(), 0);
    clock += 2h;
    // Whatever makes the list look at its rows again tells the truth again.
    session->setShowSnoozed(true);
    session->setShowSnoozed(false);
    EXPECT_TRUE(waitUntil([&] { return model.rowCount() == 1; }));
}

} // namespace
} // namespace orvia::test
