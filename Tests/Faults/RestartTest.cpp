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
        : busy({.seed = 7, .conversations = 60, .messages = 40, .keepsJournal = false})
        , load(busy.store(), busy.desk(), busy.live(), 7)
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
        watchReconnects();
        watchMessages();
    }

    /// Checks each wait against the number of failures since the last sign of life.
    void watchReconnects()
    {
        SocketClient& socket = session->socket();
        socket.onConnectionChange = [this, &socket, told = socket.onConnectionChange](bool up) {
            told(up);
            if (up) {
                failures = 0;
                return;
            }
            // The wait begins when this callback is over.
            QMetaObject::invokeMethod(
                &socket,
                [this, &socket, expected = reconnectDelay(failures, socketTimings)] {
                    EXPECT_EQ(socket.pendingReconnect(), expected);
                    waits[expected.count()] += 1;
                },
                Qt::QueuedConnection);
            ++failures;
            losses += failures == 1;
        };
        socket.onEvent = [this, told = socket.onEvent](const SocketEvent& event) {
            ++received;
            told(event);
        };
    }

    /// Notes what a screen would show, message by message.
    void watchMessages()
    {
        const auto isNew = [this](const QString& conversationId, const Message& message) {
            return !std::exchange(shown[conversationId][message.id], true);
        };
        for (const QString& id : openThreads) {
            for (const Message& message : session->messages().thread(id))
                isNew(id, message);
        }
        QObject::connect(session.get(), &Session::messageAppended, session.get(),
                         [this, isNew](const QString& id) {
                             shownTwice += !isNew(id, session->messages().thread(id).back());
                         });
        QObject::connect(session.get(), &Session::threadReset, session.get(),
                         [this, isNew](const QString& id) {
                             shown.remove(id);
                             for (const Message& message : session->messages().thread(id))
                                 shownTwice += !isNew(id, message);
                         });
    }

    [[nodiscard]] bool waitForEvents(int count)
    {
        return waitUntil([this, until = received + count] { return received >= until; });
    }

    /// The conversations that the service holds for this agent, as they go over the wire.
    std::map<QString, QByteArray> heldConversations()
    {
        std::map<QString, QByteArray> held;
        const demo::Account& account = *busy.store().account(u"mara"_s);
        for (const demo::Thread* known : busy.store().latestFirst()) {
            const Conversation& conversation = known->conversation;
            const bool snoozed = conversation.status == ConversationStatus::open && conversation.snoozedUntil
                                 && *conversation.snoozedUntil > currentInstant();
            if (account.serves(conversation.productId) && !snoozed)
                held[conversation.id] = APIJSON::encoder.encode(conversation);
        }
        return held;
    }

    std::map<QString, QByteArray> shownConversations() const
    {
        std::map<QString, QByteArray> inbox;
        for (const Conversation& conversation : session->conversations().all())
            inbox[conversation.id] = APIJSON::encoder.encode(conversation);
        return inbox;
    }

    static QByteArrayList encoded(const std::vector<Message>& messages)
    {
        QByteArrayList all;
        for (const Message& message : messages)
            all.append(APIJSON::encoder.encode(message));
        return all;
    }

    int missingMessages()
    {
        int missing = 0;
        for (const QString& id : openThreads) {
            for (const Message& message : busy.thread(id).messages)
                missing += !session->messages().contains(id, message.id);
        }
        return missing;
    }

    demo::DemoService busy;
    demo::LoadGenerator load;
    const QStringList openThreads{u"load-1"_s, u"load-2"_s, u"load-3"_s, u"load-4"_s};
    qint64 failures = 0; ///< reconnects scheduled since the last sign of life
    int losses = 0;
    qint64 received = 0;
    int shownTwice = 0;
    std::map<qint64, int> waits; ///< how often each wait was taken, by its milliseconds
    QHash<QString, QHash<QString, bool>> shown;
};

TEST_F(RestartTest, LosesNothingThatARefreshWouldNotBringBack)
{
    begin();
    const quint16 port = busy.port();
    load.start(2000);
    for (int round = 0; round < rounds(); ++round) {
        SCOPED_TRACE(round);
        ASSERT_TRUE(waitForEvents(20));
        if (round % 4 == 0)
            session->refreshConversations(); // which the restart may cut short
        busy.stop();
        // Life goes on behind the service that cannot be reached; every tenth time long enough for the
        // longest wait.
        const qint64 longEnough = round % 10 == 0 ? 7 : 1;
        ASSERT_TRUE(waitUntil([&] { return failures >= longEnough; }));
        ASSERT_TRUE(busy.listen(port));
        ASSERT_TRUE(waitUntil([this] { return session->socketConnected(); }));
    }
    load.start(0);
    ASSERT_TRUE(waitUntil([this] { return session->socketConnected(); }));
    // What is sent last arrives last.
    SocketEvent last;
    last.type = u"typing"_s;
    last.conversationId = u"end"_s;
    last.from = u"visitor"_s;
    busy.emitEvent(last);
    ASSERT_TRUE(waitUntil([this] { return session->typingConversations().contains(u"end"_s); }));
    const int missed = missingMessages();

    takeBanners();
    runTask(session->refreshConversations());
    EXPECT_EQ(shownConversations(), heldConversations());
    EXPECT_EQ(static_cast<std::size_t>(session->conversations().size()), heldConversations().size())
        << "no conversation is listed twice";
    for (const QString& id : openThreads) {
        runTask(session->loadConversation(id));
        EXPECT_EQ(encoded(session->messages().thread(id)), encoded(busy.thread(id).messages))
            << id.toStdString();
    }
    EXPECT_THAT(takeBanners(), IsEmpty());
    EXPECT_EQ(shownTwice, 0);
    EXPECT_EQ(missingMessages(), 0);
    EXPECT_GE(losses, rounds());
    EXPECT_GT(missed, 0) << "nothing was missed, so the refresh has proved nothing";
    EXPECT_GT(waits[socketTimings.longestReconnectDelay.count()], 0);

    std::printf(
        "%d restarts, %d losses of the channel, %lld events sent, %lld received; %d messages missed before "
        "the refresh, %d after it, %d shown twice; waits:",
        rounds(), losses, static_cast<long long>(busy.live().eventCount()), static_cast<long long>(received),
        missed, missingMessages(), shownTwice);
    for (const auto& [milliseconds, count] : waits)
        std::printf(" %lld ms x %d", static_cast<long long>(milliseconds), count);
    std::printf("\n");
}

} // namespace

} // namespace orvia::test
