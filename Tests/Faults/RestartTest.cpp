#include "DemoService/DemoService.h"
#include "DemoService/LoadGenerator.h"
#include "FaultFixture.h"

/// The real service, restarted again and again while it is busy. It keeps what it knows, so that the console
/// can be compared with it, record by record.
namespace orvia::test {

using namespace std::chrono_literals;
using testing::IsEmpty;

namespace {

class RestartTest : public FaultTest {
protected:
    RestartTest()
    {
        EXPECT_TRUE(busy.listen());
        socketTimings.firstReconnectDelay = 2ms;
        socketTimings.longestReconnectDelay = 20ms;
        socketTimings.pingInterval = 10ms;
    }

    /// How often the service is restarted; ORVIA_RESTARTS says otherwise.
    static int rounds()
    {
        const int wanted = qEnvironmentVariableIntValue("ORVIA_RESTARTS");
        return wanted > 0 ? wanted : 100;
    }

    void begin()
    {
        tokens.texts.insert(u"agentToken"_s, busy.tokenOf(u"mara"_s));
        watched(makeSession(busy.origin()));
        runTask(session->bootstrap());
        ASSERT_TRUE(waitUntil([this] { return session->socketConnected(); }));
        for (const QString& id : openThreads)
            runTask(session->loadConversation(id));
        session->setSelectedConversationId(openThreads.front());
        SocketClient& socket = session->socket();
        socket.onConnectionChange = [this, told = socket.onConnectionChange](bool up) {
            told(up);
            failures = up ? 0 : failures + 1;
        };
        socket.onEvent = [this, told = socket.onEvent](const SocketEvent& event) {
            told(event);
            ++received;
            lastSeen = lastSeen || event.type == "end"_L1;
        };
    }

    /// The conversations that the service holds for this agent, as they go over the wire.
    std::vector<QByteArray> heldConversations()
    {
        std::vector<QByteArray> held;
        const demo::Account& account = *busy.store().account(u"mara"_s);
        for (const demo::Thread* known : busy.store().latestFirst()) {
            const Conversation& conversation = known->conversation;
            const bool snoozed = conversation.status == ConversationStatus::open && conversation.snoozedUntil
                                 && *conversation.snoozedUntil > currentInstant();
            if (account.serves(conversation.productId) && !snoozed)
                held.push_back(APIJSON::encoder.encode(conversation));
        }
        return held;
    }

    template <class Records>
    static std::vector<QByteArray> encoded(const Records& records)
    {
        std::vector<QByteArray> all;
        for (const auto& record : records)
            all.push_back(APIJSON::encoder.encode(record));
        return all;
    }

    bool hasEveryMessage()
    {
        return std::ranges::all_of(openThreads, [this](const QString& id) {
            return std::ranges::all_of(busy.thread(id).messages, [&](const Message& message) {
                return session->messages().contains(id, message.id);
            });
        });
    }

    demo::DemoService busy{{.seed = 7, .conversations = 60, .messages = 40, .keepsJournal = false}};
    demo::LoadGenerator load{busy.store(), busy.desk(), busy.live(), 7};
    const QStringList openThreads{u"load-1"_s, u"load-2"_s, u"load-3"_s, u"load-4"_s};
    int failures = 0; ///< reconnects scheduled since the last sign of life
    int received = 0;
    bool lastSeen = false;
};

TEST_F(RestartTest, LosesNothingThatARefreshWouldNotBringBack)
{
    begin();
    const quint16 port = busy.port();
    load.start(2000);
    for (int round = 0; round < rounds(); ++round) {
        SCOPED_TRACE(round);
        ASSERT_TRUE(waitUntil([this, until = received + 20] { return received >= until; }));
        if (round % 4 == 0)
            session->refreshConversations(); // which the restart may cut short
        busy.stop();
        // Life goes on behind the service that cannot be reached; every tenth time long enough for the
        // longest wait.
        ASSERT_TRUE(waitUntil([&] { return failures >= (round % 10 == 0 ? 7 : 1); }));
        ASSERT_TRUE(busy.listen(port));
        ASSERT_TRUE(waitUntil([this] { return session->socketConnected(); }));
    }
    load.start(0);
    SocketEvent last; // What is sent last arrives last.
    last.type = u"end"_s;
    busy.emitEvent(last);
    ASSERT_TRUE(waitUntil([this] { return lastSeen; }));
    EXPECT_FALSE(hasEveryMessage()) << "nothing was missed, so the refresh proves nothing";

    takeBanners();
    runTask(session->refreshConversations());
    EXPECT_THAT(encoded(session->conversations().all()),
                testing::UnorderedElementsAreArray(heldConversations()));
    for (const QString& id : openThreads) {
        runTask(session->loadConversation(id));
        EXPECT_EQ(encoded(session->messages().thread(id)), encoded(busy.thread(id).messages))
            << id.toStdString();
    }
    EXPECT_THAT(takeBanners(), IsEmpty());
}

} // namespace

} // namespace orvia::test
