#include "ConsoleFixture.h"

#include <algorithm>
#include <csignal>

/// How the program ends.
namespace orvia::test {

using namespace Qt::StringLiterals;

using LifetimeTest = ConsoleTest;

TEST_F(LifetimeTest, EndsInOrderWhenAskedTo)
{
    signInBeforehand();
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        service.clearJournal();
        Console console(arguments());
        ASSERT_TRUE(waitForChannel());
        console.signal(signal);
        EXPECT_EQ(console.exitCode(), 0) << "signal " << signal;
        EXPECT_EQ(console.errors(), "");
        EXPECT_EQ(console.output(), "");
    }
}

TEST_F(LifetimeTest, EndsInOrderWhileTheServiceOwesAnswers)
{
    signInBeforehand();
    service.holdAnswers(true);
    Console console(arguments());
    ASSERT_TRUE(waitForRequest(u"/v1/agent/me"_s));
    console.signal(SIGTERM);
    EXPECT_EQ(console.exitCode(), 0);
    EXPECT_EQ(console.errors(), "");
}

/// The machine sleeps: the program stands still while the service and the time go on without it.
TEST_F(LifetimeTest, ComesBackAfterItWasSuspended)
{
    signInBeforehand();
    Console console(arguments({u"orvia://conversation/helen-brandt"_s}));
    ASSERT_TRUE(waitForConversation(u"helen-brandt"_s));
    ASSERT_TRUE(waitForChannel());
    const quint16 port = service.port();
    for (const bool serviceRestarts : {false, true}) {
        console.signal(SIGSTOP);
        if (serviceRestarts) {
            service.stop();
            ASSERT_TRUE(service.listen(port));
        }
        service.postAsVisitor(u"helen-brandt"_s, u"Are you still there?"_s);
        service.clearJournal();
        console.signal(SIGCONT);
        // It says again what is open, and it reads what the visitor writes there.
        const auto saysOf = [this](const char* type) {
            return std::ranges::any_of(service.frames(), [type](const demo::DemoService::Frame& frame) {
                return frame.text.contains(type) && frame.text.contains("helen-brandt");
            });
        };
        if (serviceRestarts) {
            ASSERT_TRUE(waitUntil([&] { return saysOf("viewing"); }));
            service.postAsVisitor(u"helen-brandt"_s, u"Good."_s);
        }
        EXPECT_TRUE(waitUntil([&] { return saysOf("read"); }));
        EXPECT_EQ(service.live().channelCount(), 1U);
    }
    console.signal(SIGTERM);
    EXPECT_EQ(console.exitCode(), 0);
    EXPECT_EQ(console.errors(), "");
}

} // namespace orvia::test
