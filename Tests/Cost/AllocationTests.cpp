#include "APIClient/NetworkSession.h"
#include "AllocationCount.h"
#include "Benchmarks/Sample.h"
#include "Keychain/TokenStore.h"
#include "Models/APIJSON.h"
#include "Models/Responses.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"

#include <QTemporaryDir>
#include <QThreadPool>

#include <gtest/gtest.h>

/// Guards the cost of decoding and of live events by counting, which gives the same on every machine. The
/// bounds are what was counted when they were written down, and a tenth more.
namespace orvia::test {
namespace {

using namespace Qt::StringLiterals;

template <class Work>
std::size_t allocationsOf(Work work)
{
    const std::size_t before = allocationCount();
    work();
    return allocationCount() - before;
}

class NoTokens : public TokenStore {
public:
    std::optional<QString> string(const QString&) override { return std::nullopt; }
    bool set(const std::optional<QString>&, const QString&) override { return true; }
};

/// What 10,000 events of a hundred conversations take in an inbox of @p size.
std::size_t allocationsOfEvents(int size)
{
    const QTemporaryDir directory;
    DefaultsStore defaults(directory.filePath(u"defaults.ini"_s));
    NoTokens tokens;
    NetworkSession network;
    Session session({defaults, tokens, network, QUrl(u"http://127.0.0.1:9"_s)});
    for (int number = 0; number < size; ++number) {
        SocketEvent event;
        event.type = u"conversation"_s;
        event.conversation = bench::sampleConversation(number);
        session.handle(event);
    }
    const std::vector<SocketEvent> events = bench::sampleEvents(10'000, size, 100);
    return allocationsOf([&] {
        for (const SocketEvent& event : events)
            session.handle(event);
    });
}

TEST(AllocationTest, DecodingAPageTakesABoundedNumber)
{
    // Helping threads would share fewer texts, the more there are.
    QThreadPool::globalInstance()->setMaxThreadCount(0);
    const QByteArray page = bench::inboxPage(1'000);
    const std::size_t count =
        allocationsOf([&page] { APIJSON::decoder.decode<ConversationsResponse>(page); });
    constexpr std::size_t recorded = 4'200;
    EXPECT_LE(count, recorded * 11 / 10);
    EXPECT_GT(count, recorded / 2)
        << "the page is not what it was, or this number wants to be written down anew";
}

TEST(AllocationTest, EventsTakeABoundedNumberWhateverTheInboxHolds)
{
    const std::size_t few = allocationsOfEvents(100);
    const std::size_t many = allocationsOfEvents(10'000);
    constexpr std::size_t recorded = 10'400;
    EXPECT_LE(few, recorded * 11 / 10);
    EXPECT_GT(few, recorded / 2)
        << "the events are not what they were, or this number wants to be written down anew";
    EXPECT_LE(many, few * 11 / 10);
}

} // namespace
} // namespace orvia::test
