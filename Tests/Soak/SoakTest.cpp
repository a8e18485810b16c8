#include "Inventory.h"
#include "Support/PrivateBus.h"
#include "WorkingConsole.h"

#include <QSemaphore>
#include <QThreadPool>

#include <numeric>

/// A working day at many times its pace, and what of it is left in the end.
namespace orvia::test {

namespace {

constexpr int eventsPerTurn = 100;
constexpr int turnsOfAWholeDay = 10'000;
constexpr double mostGrowth = 1.05;
/// The tenth of a short day is a few seconds, in which not everything that is kept has been met yet.
constexpr double mostGrowthOfAShortDay = 1.25;
#if defined(__SANITIZE_ADDRESS__)
constexpr bool keepsFreedMemory = true;
#else
constexpr bool keepsFreedMemory = false;
#endif

int turnsOfTheDay()
{
    return qgetenv("ORVIA_SOAK") == "day" ? turnsOfAWholeDay : turnsOfAWholeDay / 100;
}

class SoakTest : public testing::Test {
protected:
    SoakTest()
    {
        service.process().start(QStringLiteral(ORVIA_SOAK_SERVICE), QStringList());
        while (!service.process().canReadLine() && service.process().waitForReadyRead(30'000)) {
        }
        origin = QUrl(QString::fromLatin1(service.process().readLine()).trimmed());
    }

    std::unique_ptr<WorkingConsole> openConsole()
    {
        return std::make_unique<WorkingConsole>(
            origin, [this](const QByteArray& line) { service.process().write(line); }, tally);
    }

    /// The pool makes its threads when it first needs them; here it keeps them, so that they are always
    /// there.
    static void makeWorkerThreads()
    {
        QThreadPool& pool = *QThreadPool::globalInstance();
        pool.setExpiryTimeout(-1);
        QSemaphore begun;
        QSemaphore mayEnd;
        for (int thread = 0; thread < pool.maxThreadCount(); ++thread) {
            pool.start([&] {
                begun.release();
                mayEnd.acquire();
            });
        }
        begun.acquire(pool.maxThreadCount());
        mayEnd.release(pool.maxThreadCount());
        pool.waitForDone();
    }

    void report(const char* when, const Inventory& inventory) const
    {
        const auto sum = [](const Inventory::Counts& counts) {
            return std::accumulate(counts.begin(), counts.end(), 0,
                                   [](int total, const auto& entry) { return total + entry.second; });
        };
        std::printf("%-18s %8lld events %6d switches: heap %6lld KiB, own %6lld KiB, %d objects, %d timers, "
                    "%d descriptors\n",
                    when, static_cast<long long>(tally.events), tally.switches,
                    static_cast<long long>(inventory.heapBytes / 1024),
                    static_cast<long long>(inventory.anonymousBytes / 1024), sum(inventory.objects),
                    sum(inventory.timers), sum(inventory.descriptors));
        std::fflush(stdout);
    }

    ChildProcess service;
    QUrl origin;
    Tally tally;
};

} // namespace

TEST_F(SoakTest, ADayLeavesNothingBehind)
{
    ASSERT_TRUE(origin.isValid());
    Inventory::watchObjects();
    makeWorkerThreads();
    // What is made once for the whole process is made by a first, short shift.
    {
        const auto console = openConsole();
        console->work(110, eventsPerTurn);
        console->rest();
    }
    const Inventory before = Inventory::take();
    report("before the day", before);
    tally = {};

    const int turns = turnsOfTheDay();
    auto console = openConsole();
    console->work(turns / 10, eventsPerTurn);
    console->rest();
    const Inventory morning = Inventory::take();
    report("after a tenth", morning);
    for (int tenth = 2; tenth <= 10 && !HasFailure(); ++tenth) {
        console->work(turns / 10, eventsPerTurn);
        if (tenth % 3 == 1 && tenth < 10) {
            console->rest();
            report("on the way", Inventory::take());
        }
    }
    console->rest();
    const Inventory evening = Inventory::take();
    report("in the evening", evening);

    EXPECT_EQ(Inventory::difference(morning.objects, evening.objects), "");
    EXPECT_EQ(Inventory::difference(morning.timers, evening.timers), "");
    EXPECT_EQ(Inventory::difference(morning.descriptors, evening.descriptors), "");
    EXPECT_LE(static_cast<double>(evening.heapBytes),
              static_cast<double>(morning.heapBytes)
                  * (turns == turnsOfAWholeDay ? mostGrowth : mostGrowthOfAShortDay));
    // What the allocator holds besides settles only in the course of hours; the sanitizers keep freed memory.
    if (turns == turnsOfAWholeDay && !keepsFreedMemory) {
        EXPECT_LE(static_cast<double>(evening.anonymousBytes),
                  static_cast<double>(morning.anonymousBytes) * mostGrowth);
    }
    EXPECT_LE(console->session().messages().messageCount(), Session::keptMessages);
    EXPECT_TRUE(console->session().typingConversations().isEmpty());
    EXPECT_TRUE(console->session().viewers().isEmpty());
    EXPECT_THAT(console->banners(), testing::IsEmpty());

    EXPECT_EQ(tally.switches, turns);
    EXPECT_EQ(tally.uploads, turns / 10);
    EXPECT_GE(tally.events, qint64(turns) * eventsPerTurn);

    console.reset();
    const Inventory after = Inventory::take();
    report("after the day", after);
    EXPECT_EQ(Inventory::difference(before.objects, after.objects), "");
    EXPECT_EQ(Inventory::difference(before.timers, after.timers), "");
    EXPECT_EQ(Inventory::difference(before.descriptors, after.descriptors), "");
    std::printf(
        "%d drafts, %d messages, %d uploads, %d searches, %d sheets, %d appearances, %d reconnects, %d "
        "sign-ins\n",
        tally.drafts, tally.messages, tally.uploads, tally.searches, tally.sheets, tally.appearances,
        tally.reconnects, tally.signIns);
}

} // namespace orvia::test
