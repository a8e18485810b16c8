#include "Session/SessionFixture.h"
#include "Views/ConversationListView/ConversationListModel.h"
#include "Views/ConversationListView/TimeTick.h"

namespace orvia::test {
namespace {

using namespace std::chrono_literals;

/// The clock goes back by an hour while the console runs, as it does when somebody corrects it.
using ClockSetBack = SessionFixture;

TEST_F(ClockSetBack, KeepsRelativeTimesGoing)
{
    TimeTick tick([this] { return clock; }, 60s);
    int ticks = 0;
    QObject::connect(&tick, &TimeTick::ticked, [&] { ++ticks; });
    tick.request(clock - 20min - 60s + 10ms);
    ASSERT_TRUE(waitUntil([&] { return ticks == 1; }));
    clock -= 1h;
    tick.request(clock - 20min - 10s);
    EXPECT_EQ(tick.due(), clock + 50s) << "not an hour later";
}

TEST_F(ClockSetBack, HidesASnoozedConversationUntilTheClockSaysSo)
{
    scriptInbox({});
    signIn();
    Conversation snoozed = makeConversation(u"c1"_s);
    snoozed.snoozedUntil = clock + 30ms;
    deliver(snoozed);
    ConversationListModel model(*session, [this] { return clock; });
    EXPECT_EQ(model.rowCount(), 0);
    clock -= 1h;
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
