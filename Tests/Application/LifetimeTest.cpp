#include "ConsoleFixture.h"

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

} // namespace orvia::test
