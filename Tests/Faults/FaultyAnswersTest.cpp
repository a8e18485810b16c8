#include "FaultFixture.h"

#include <QFile>

/// Every operation of the session against every way in which a service can fail to answer it.
namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Ending = ScriptedAnswer::Ending;

const QString undecodable = u"Could not decode server response"_s;

ScriptedAnswer page(int status, const QByteArray& body)
{
    return {.status = status, .headers = {{"Content-Type", "text/html"}}, .body = body};
}

ScriptedAnswer raw(const char* text, Ending ending = Ending::close)
{
    return ScriptedAnswer::rawBytes(text, ending);
}

const QString closed = u"Network error: Connection closed"_s;
/// Which of the two it is depends on whether the end came with the bytes before it or after them.
const QString closedOrUndecodable = closed + u'|' + undecodable;
const QString tooLarge = u"Network error: The answer is too large."_s;

/// @p elsewhere is an origin that must not hear of anything.
std::vector<Fault> faults(const QByteArray& elsewhere)
{
    static const QByteArray bomb = qCompress(QByteArray(32 * 1024 * 1024, ' ')).mid(sizeof(quint32));
    return {
        {"reset before the answer", ScriptedAnswer::reset(), closed},
        {"closed before the answer", raw(""), closed},
        {"reset within the body", raw("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{\"a\"", Ending::reset),
         closedOrUndecodable},
        {"cut within the body", ScriptedAnswer::truncated("{", 10), closedOrUndecodable},
        {"cut within a chunk", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\n{\"a\":"),
         closedOrUndecodable},
        {"no last chunk", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\n{\"a\":\r\n"),
         closedOrUndecodable},
        {"a chunk of no size", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n{\r\n"),
         closedOrUndecodable},
        {"cut within the head", raw("HTTP/1.1 200 OK\r\nContent-Le"), closedOrUndecodable},
        {"a length below zero", raw("HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\n{"), closedOrUndecodable},
        {"a length beyond every memory",
         raw("HTTP/1.1 200 OK\r\nContent-Length: 9000000000000000000\r\n\r\n{"), closedOrUndecodable},
        {"not HTTP", raw("SSH-2.0-nothing here\r\n\r\n"), closed},
        {"another protocol", raw("HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n\r\n"),
         u"Request failed (101)"_s},
        {"not packed as announced",
         raw("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 4\r\n\r\nxxxx"), undecodable},
        {"200 with nothing", ScriptedAnswer::json(""), undecodable},
        {"204", ScriptedAnswer::json("", 204), undecodable},
        {"200 with a page", page(200, "<html>Welcome to our Wi-Fi</html>"), undecodable},
        {"200 with half a document", ScriptedAnswer::json("{\"conversations\":[{"), undecodable},
        {"200 in UTF-16", ScriptedAnswer::json(QByteArray("\xFF\xFE{\0}\0", 6)), undecodable},
        {"304", ScriptedAnswer::json("", 304), u"Request failed (304)"_s},
        {"redirect elsewhere", ScriptedAnswer::redirect(elsewhere + "/v1/agent/me", 307),
         u"Request failed (307)"_s},
        {"redirect without an address", {.status = 301}, u"Request failed (301)"_s},
        {"redirect to an empty address", ScriptedAnswer::redirect(""), u"Request failed (302)"_s},
        {"redirect in circles", ScriptedAnswer::redirect("?", 307),
         u"Network error: Too many redirects|Network error: Unknown error"_s},
        {"429 with JSON", refusal(429, "Slow down."), u"Slow down."_s},
        {"404 with nothing", page(404, ""), u"Request failed (404)"_s},
        {"500 with other JSON", ScriptedAnswer::json("[\"error\"]", 500), u"Request failed (500)"_s},
        {"502 with a page", page(502, "<html>Bad gateway</html>"), u"Request failed (502)"_s},
        {"503 with half a body", raw("HTTP/1.1 503 Busy\r\nContent-Length: 50\r\n\r\n{\"error\":"),
         closed + u"|Request failed (503)"_s},
        {"a success without end", ScriptedAnswer::endless("HTTP/1.1 200 OK\r\n\r\n"), tooLarge},
        {"a refusal without end", ScriptedAnswer::endless("HTTP/1.1 500 Oh\r\n\r\n"), tooLarge},
        {"a packed body that unpacks without end",
         {.headers = {{"Content-Encoding", "deflate"}}, .body = bomb},
         undecodable},
    };
}

/// What an agent does, and the request that it makes.
struct Operation {
    const char* name;
    const char* method;
    const char* path;
    QCoro::Task<void> (*start)(Session&);

    void run(Session& session) const { runTask(start(session)); }
};

QCoro::Task<void> openConversation(Session& session)
{
    co_await session.loadConversation(u"c1"_s);
}

QCoro::Task<void> searchForSomethingElse(Session& session)
{
    session.setSearchText(session.searchText() == u"beans"_s ? u"filter"_s : u"beans"_s);
    EXPECT_TRUE(waitUntil([&] { return !session.isSearching(); }));
    co_return;
}

const Operation operations[] = {
    {"refresh", "GET", "/v1/agent/conversations", [](Session& s) { return s.refreshConversations(); }},
    {"open", "GET", "/v1/agent/conversations/c1", openConversation},
    {"reply", "POST", "/v1/agent/conversations/c1/messages",
     [](Session& s) { return s.sendMessage(u"c1"_s, u"Hello"_s, false, {}); }},
    {"close", "POST", "/v1/agent/conversations/c1/close",
     [](Session& s) { return s.setStatus(ConversationStatus::closed, u"c1"_s); }},
    {"mute", "POST", "/v1/agent/conversations/c1/mute",
     [](Session& s) { return s.setMuted(u"c1"_s, false); }},
    {"mode", "PATCH", "/v1/agent/me/preferences",
     [](Session& s) { return s.setNotifyMode(NotifyMode::all); }},
    {"search", "GET", "/v1/agent/search", searchForSomethingElse},
};

/// The most memory that this program has ever had, in bytes (VmHWM). What the service has sent says little:
/// the platform goes on reading for a while, and throws it away.
qint64 memoryHighWater()
{
    QFile status(u"/proc/self/status"_s);
    EXPECT_TRUE(status.open(QIODevice::ReadOnly));
    const QByteArray text = status.readAll();
    const QByteArray line = text.mid(text.indexOf("VmHWM:")).split('\n').first();
    return line.simplified().split(' ').at(1).toLongLong() * 1024;
}

class FaultyAnswersTest : public FaultTest {
protected:
    FaultyAnswersTest() { timings.searchDebounce = 1ms; }

    /// Checks that exactly one of the texts that @p fault allows was told.
    static void expectTold(const QStringList& told, const Fault& fault)
    {
        ASSERT_EQ(told.size(), 1) << told.join(u'|').toStdString();
        EXPECT_TRUE(fault.text.split(u'|').contains(told.front())) << told.front().toStdString();
    }

    ScriptedService elsewhere;
};

TEST_F(FaultyAnswersTest, AreToldInTheBannerAndChangeNothing)
{
    Session& made = goToWork();
    const Workplace before = workplace();
    int injected = 0;
    for (const Fault& fault : faults(elsewhere.url().toEncoded())) {
        for (const Operation& operation : operations) {
            SCOPED_TRACE(std::string(operation.name) + ": " + fault.name);
            service.always(operation.method, operation.path, fault.answer);
            operation.run(made);
            ++injected;
            expectTold(takeBanners(), fault);
            EXPECT_TRUE(workplace() == before);

            repair();
            operation.run(made);
            EXPECT_THAT(takeBanners(), IsEmpty()) << "the fault is over";
            EXPECT_TRUE(workplace() == before);
        }
    }
    EXPECT_TRUE(made.socketConnected());
    EXPECT_EQ(service.channels().size(), 1U) << "the live channel has nothing to do with it";
    EXPECT_THAT(elsewhere.requests(), IsEmpty()) << "the token must not leave the origin";
    // Without a bound the two endless pages of one refresh alone would have taken twice that.
    EXPECT_LT(memoryHighWater(), ScriptedService::endlessEnough);
    std::printf("%d faulty answers, %lld MB sent without end, at most %lld MB of memory\n", injected,
                static_cast<long long>(service.endlessBytes() >> 20),
                static_cast<long long>(memoryHighWater() >> 20));
}

TEST_F(FaultyAnswersTest, AtTheSignInAreHandedToItAndLeaveNobodySignedIn)
{
    repair();
    watched(makeSession());
    runTask(session->bootstrap());
    for (const Fault& fault : faults(elsewhere.url().toEncoded())) {
        SCOPED_TRACE(fault.name);
        service.always("POST", "/v1/agent/login", fault.answer);
        const auto outcome = runTask(session->login(u"mara@orvia.example"_s, u"secret"_s));
        ASSERT_TRUE(outcome.error);
        expectTold({outcome.error->message}, fault);
        EXPECT_FALSE(session->token());
        EXPECT_TRUE(tokens.texts.isEmpty());
    }
    EXPECT_THAT(banners, IsEmpty());
    EXPECT_THAT(elsewhere.requests(), IsEmpty()) << "the password must not leave the origin";
    repair();
    EXPECT_TRUE(runTask(session->login(u"mara@orvia.example"_s, u"secret"_s)).value);
    EXPECT_EQ(session->agent(), self);
}

TEST_F(FaultyAnswersTest, ThatNeverComeAreGivenUp)
{
    network = std::make_unique<NetworkSession>(
        NetworkSession::Limits{.timeout = 300ms, .maxBodyBytes = longestBody}, nullptr);
    Session& made = goToWork();
    const Workplace before = workplace();
    const std::pair<const char*, ScriptedAnswer> stalls[] = {
        {"nothing", ScriptedAnswer::stall()},
        {"half a head", raw("HTTP/1.1 200 OK\r\nContent-", Ending::stall)},
        {"half a body", raw("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{", Ending::stall)},
        {"half a refusal", raw("HTTP/1.1 500 Oh\r\nContent-Length: 9\r\n\r\n{", Ending::stall)},
    };
    for (const auto& [name, answer] : stalls) {
        SCOPED_TRACE(name);
        service.always("GET", "/v1/agent/conversations", answer);
        runTask(made.refreshConversations());
        EXPECT_THAT(takeBanners(), ElementsAre(u"Network error: The request timed out."_s));
        EXPECT_TRUE(workplace() == before);
        repair();
        runTask(made.refreshConversations());
        EXPECT_THAT(takeBanners(), IsEmpty());
    }
}

/// The agent signs out while answers are owed; they come when somebody else has signed in.
TEST_F(FaultyAnswersTest, ToAnAgentWhoSignedOutAreForNobody)
{
    goToWork();
    const Conversation secret = makeConversation(u"secret"_s);
    const ScriptedAnswer answers[] = {
        // In the order of the operations.
        answerOf(ConversationsResponse{{{secret}}}),
        answerOf(ConversationDetailResponse{secret, {{makeMessage(u"m9"_s, u"secret"_s)}}}),
        answerOf(MessageResponse{makeMessage(u"m9"_s, u"c1"_s)}),
        refusal(401, "expired"),
        ScriptedAnswer::json("{}"),
        answerOf(AgentResponse{teammates.back()}),
    };
    const Operation* operation = operations;
    for (const ScriptedAnswer& answer : answers) {
        SCOPED_TRACE(operation->name);
        std::vector held{service.hold(operation->method, operation->path)};
        if (operation == operations)
            held.push_back(service.hold(operation->method, operation->path)); // the other page
        startTask(operation->start(*session));
        ASSERT_TRUE(waitUntil(
            [&] { return std::ranges::all_of(held, [](const auto& page) { return page->isWaiting(); }); }));
        session->logout();
        runTask(session->login(u"b"_s, u"c"_s));
        const Workplace before = workplace();
        for (const auto& page : held)
            page->answer(answer);
        // Whatever is asked afterwards is answered afterwards.
        for (int turn = 0; turn < 3; ++turn)
            runTask(session->visitorConversations(u"a@example.com"_s));
        spinFor(5ms);
        EXPECT_TRUE(workplace() == before);
        EXPECT_THAT(banners, IsEmpty());
        ++operation;
    }
    // The identity of the start is the one that would sign the next agent out.
    const auto held = service.hold("GET", "/v1/agent/me");
    watched(makeSession());
    session->bootstrap();
    ASSERT_TRUE(waitUntil([&] { return held->isWaiting(); }));
    session->logout();
    runTask(session->login(u"b"_s, u"c"_s));
    held->answer(refusal(401, "expired"));
    runTask(session->visitorConversations(u"a@example.com"_s));
    spinFor(5ms);
    EXPECT_EQ(session->agent(), self);
    EXPECT_THAT(banners, IsEmpty());
}

} // namespace

} // namespace orvia::test
