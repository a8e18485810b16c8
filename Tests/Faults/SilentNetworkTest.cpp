#include "FaultFixture.h"
#include "Support/PrivateBus.h"

#include <csignal>
#include <thread>

/// Networks and machines that stop without a word: nobody closes or resets anything.
namespace orvia::test {

using namespace std::chrono_literals;

namespace {

const QString timedOut = u"Network error: The request timed out."_s;

class SilentNetworkTest : public FaultTest {
protected:
    SilentNetworkTest()
    {
        network = std::make_unique<NetworkSession>(NetworkSession::Limits{.timeout = 500ms}, nullptr);
        // Long enough to be seen waiting.
        socketTimings.firstReconnectDelay = socketTimings.longestReconnectDelay = 50ms;
        socketTimings.pingInterval = 10ms;
        socketTimings.acknowledgementTimeout = 200ms;
    }

    /// Refreshes until that works. Each kept connection that is dead may cost one attempt.
    void expectRefreshToRecover(int attempts)
    {
        for (int attempt = 0; attempt < attempts; ++attempt) {
            runTask(session->refreshConversations());
            EXPECT_FALSE(session->isLoadingList());
            const QStringList told = takeBanners();
            if (told.isEmpty())
                return;
            EXPECT_THAT(told, testing::Each(timedOut));
        }
        ADD_FAILURE() << "no refresh came through";
    }
};

/// A cable that was cut, an address that has changed, a peer without power: the old connections carry nothing
/// more, in neither direction, while new ones work.
TEST_F(SilentNetworkTest, ADeadPeerIsFoundOutAndReplaced)
{
    Session& made = goToWork();
    const Workplace before = workplace();
    for (std::size_t round = 1; round <= 5; ++round) {
        SCOPED_TRACE(round);
        Notifications changes(made, &Session::socketConnectedChanged);
        service.vanish();
        ASSERT_TRUE(waitUntil([&] { return service.channels().size() == round + 1; }));
        ASSERT_TRUE(waitUntil([&] { return made.socketConnected(); }));
        EXPECT_EQ(changes.count, 2) << "down once, up once";
        expectRefreshToRecover(7);
        EXPECT_TRUE(workplace() == before);
    }
    spinFor(3 * socketTimings.acknowledgementTimeout);
    EXPECT_EQ(service.channels().size(), 6U) << "a channel that is only idle stays";
}

/// A machine that sleeps: timers run late, all at once, and whatever they bounded seems to be over.
TEST_F(SilentNetworkTest, TimersThatAreAllLateDoNoHarm)
{
    socketTimings.handshakeTimeout = 100ms;
    timings.bannerDismiss = timings.typingClear = 50ms;
    Session& made = goToWork();
    const Workplace before = workplace();

    // Asleep while all is quiet, while an answer is owed, and while the channel is being opened.
    const std::function<void()> moments[] = {
        [] {},
        [&] { made.refreshConversations(); },
        [&] { made.setSearchText(u"beans"_s); },
        [&] {
            service.channel()->reset();
            EXPECT_TRUE(waitUntil([&] { return made.socket().pendingReconnect().has_value(); }));
        },
        [&] {
            made.showBanner(u"before the sleep"_s);
            service.pause();
            EXPECT_TRUE(waitUntil([&] { return made.socket().pendingReconnect().has_value(); }));
            service.resume();
        },
    };
    for (const auto& fallAsleep : moments) {
        fallAsleep();
        std::this_thread::sleep_for(600ms);
        ASSERT_TRUE(waitUntil(
            [&] { return made.socketConnected() && !made.isLoadingList() && !made.isSearching(); }));
        takeBanners();
        expectRefreshToRecover(7);
        EXPECT_TRUE(workplace() == before);
    }
}

/// The real service in a process of its own, stopped as a debugger or a snapshot of its machine stops it.
TEST_F(SilentNetworkTest, AFrozenServiceIsWaitedForAndGoesOn)
{
    ChildProcess child;
    child.process().start(QStringLiteral(ORVIA_DEMO_PROGRAM), {u"--quiet"_s});
    ASSERT_TRUE(child.process().waitForReadyRead());
    const QUrl origin(QString::fromUtf8(child.process().readLine()).section(u' ', -1).trimmed());
    const auto signal = [&](int number) { ::kill(static_cast<pid_t>(child.process().processId()), number); };

    watched(makeSession(origin));
    runTask(session->bootstrap());
    ASSERT_TRUE(runTask(session->login(u"mara@tessaly.example"_s, u"demo"_s)).value);
    ASSERT_TRUE(waitUntil([this] { return session->socketConnected(); }));
    takeBanners();
    const Workplace before = workplace();
    ASSERT_FALSE(before.inbox.empty());
    Notifications changes(*session, &Session::socketConnectedChanged);
    for (int round = 0; round < 3; ++round) {
        signal(SIGSTOP);
        runTask(session->refreshConversations());
        EXPECT_THAT(takeBanners(), testing::ElementsAre(timedOut));
        EXPECT_TRUE(workplace() == before);
        signal(SIGCONT);
        expectRefreshToRecover(7);
        EXPECT_TRUE(workplace() == before);
    }
    // Its machine still acknowledges what arrives, so the channel is kept and works.
    EXPECT_EQ(changes.count, 0);
    EXPECT_TRUE(session->socketConnected());
}

} // namespace

} // namespace orvia::test
