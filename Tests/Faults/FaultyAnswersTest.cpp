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
    std::function<void(Session&)> run;
};

const Operation operations[] = {
    {"refresh", "GET", "/v1/agent/conversations",
     [](Session& session) { runTask(session.refreshConversations()); }},
    {"open", "GET", "/v1/agent/conversations/c1",
     [](Session& session) { runTask(session.loadConversation(u"c1"_s)); }},
    {"reply", "POST", "/v1/agent/conversations/c1/messages",
     [](Session& session) { runTask(session.sendMessage(u"c1"_s, u"Hello"_s, false, {})); }},
    {"close", "POST", "/v1/agent/conversations/c1/close",
     [](Session& session) { runTask(session.setStatus(ConversationStatus::closed, u"c1"_s)); }},
    {"mute", "POST", "/v1/agent/conversations/c1/mute",
     [](Session& session) { runTask(session.setMuted(u"c1"_s, false)); }},
    {"mode", "PATCH", "/v1/agent/me/preferences",
     [](Session& session) { runTask(session.setNotifyMode(NotifyMode::all)); }},
    {"search", "GET", "/v1/agent/search",
     [](Session& session) {
         session.setSearchText(session.searchText() == u"beans"_s ? u"filter"_s : u"beans"_s);
         EXPECT_TRUE(waitUntil([&] { return !session.isSearching(); }));
     }},
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

TEST_F(FaultyAnswersTest, AtTheStartKeepTheAgentAndAreTriedAgain)
{
    goToWork();
    for (const bool restored : {true, false}) {
        for (const Fault& fault : faults(elsewhere.url().toEncoded())) {
            SCOPED_TRACE(std::string(restored ? "restored: " : "unknown: ") + fault.name);
            service.always("GET", "/v1/agent/me", fault.answer);
            if (!restored)
                defaults.remove(u"cachedIdentity"_s);
            watched(makeSession());
            runTask(session->bootstrap());
            EXPECT_EQ(session->agent().has_value(), restored);
            EXPECT_EQ(session->conversations().size(), restored ? 2 : 0);
            EXPECT_TRUE(session->token());
            ASSERT_FALSE(banners.isEmpty());
            expectTold({banners.front()}, fault);

            repair();
            EXPECT_TRUE(waitUntil([this] {
                return session->agent() == self && session->socketConnected() && !session->banner()
                       && session->conversations().size() == 2;
            }));
            banners.clear();
        }
    }
    EXPECT_THAT(elsewhere.requests(), IsEmpty());
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
        {"a head", raw("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n", Ending::stall)},
        {"half a body", raw("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{", Ending::stall)},
        {"half a refusal", raw("HTTP/1.1 500 Oh\r\nContent-Length: 9\r\n\r\n{", Ending::stall)},
        {"a head of ten thousand bytes",
         ScriptedAnswer::rawBytes("HTTP/1.1 200 OK\r\nX: " + QByteArray(10'000, 'x'), Ending::stall)},
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

TEST_F(FaultyAnswersTest, ThatAreOddButWholeAreAnswers)
{
    Session& made = goToWork();
    other.lastMessagePreview = u"ünlike before"_s;
    const QByteArray body = APIJSON::encoder.encode(ConversationsResponse{{{open, other}}});
    const QByteArray head =
        "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n";
    QByteArray chunks = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (const char byte : body)
        chunks += QByteArray("1\r\n") + byte + "\r\n";
    const std::pair<const char*, ScriptedAnswer> odd[] = {
        {"byte after byte", {.raw = head + body, .bytewise = true}},
        {"chunks of one byte", {.raw = chunks + "0\r\n\r\n"}},
        {"ended by the connection's end", ScriptedAnswer::rawBytes("HTTP/1.0 200 OK\r\n\r\n" + body)},
        {"after a hundred others that tell to continue",
         {.raw = QByteArray("HTTP/1.1 100 Continue\r\n\r\n").repeated(100) + head + body}},
        {"the same answer twice", {.raw = (head + body).repeated(2)}},
    };
    const ScriptedAnswer none = answerOf(ConversationsResponse{});
    for (const auto& [name, answer] : odd) {
        SCOPED_TRACE(name);
        service.always("GET", "/v1/agent/conversations", [answer, none](const ReceivedRequest& request) {
            return request.query().contains("status=open") ? answer : none;
        });
        runTask(made.refreshConversations());
        EXPECT_THAT(takeBanners(), IsEmpty());
        const auto inbox = made.conversations().all();
        EXPECT_THAT(std::vector<Conversation>(inbox.begin(), inbox.end()), ElementsAre(open, other));
        // An answer left over must not become the answer to the next request.
        for (const Operation& operation : operations) {
            if (operation.name != std::string_view("refresh"))
                operation.run(made);
        }
        EXPECT_THAT(takeBanners(), IsEmpty());
        made.setSelectedConversationId(u"c1"_s);
    }
}

/// The agent signs out while answers are owed; they come when somebody else has signed in.
TEST_F(FaultyAnswersTest, ToAnAgentWhoSignedOutAreForNobody)
{
    goToWork();
    struct Late {
        const char* method;
        const char* path;
        std::function<void(Session&)> start;
        ScriptedAnswer answer;
    };
    const Conversation secret = makeConversation(u"secret"_s);
    const Late cases[] = {
        {"GET", "/v1/agent/conversations", [](Session& s) { s.refreshConversations(); },
         answerOf(ConversationsResponse{{{secret}}})},
        {"GET", "/v1/agent/conversations/c1", [](Session& s) { s.loadConversation(u"c1"_s); },
         answerOf(ConversationDetailResponse{secret, {{makeMessage(u"m9"_s, u"secret"_s)}}})},
        {"POST", "/v1/agent/conversations/c1/close",
         [](Session& s) { s.setStatus(ConversationStatus::closed, u"c1"_s); }, refusal(401, "expired")},
        {"PATCH", "/v1/agent/me/preferences", [](Session& s) { s.setNotifyMode(NotifyMode::mine); },
         answerOf(AgentResponse{teammates.back()})},
        {"GET", "/v1/agent/teammates", [](Session& s) { s.loadAssignableAgents(); },
         ScriptedAnswer::json("{}")},
        {"POST", "/v1/agent/conversations/c1/messages",
         [](Session& s) { s.sendMessage(u"c1"_s, u"x"_s, false, {}); },
         answerOf(MessageResponse{makeMessage(u"m9"_s, u"c1"_s)})},
    };
    for (const Late& late : cases) {
        SCOPED_TRACE(late.path);
        const bool twoPages = late.path == std::string_view("/v1/agent/conversations");
        const auto held = service.hold(late.method, late.path);
        const auto second = twoPages ? service.hold(late.method, late.path) : held;
        late.start(*session);
        ASSERT_TRUE(waitUntil([&] { return held->isWaiting() && second->isWaiting(); }));
        session->logout();
        runTask(session->login(u"b"_s, u"c"_s));
        const Workplace before = workplace();
        held->answer(late.answer);
        if (twoPages)
            second->answer(late.answer);
        // Whatever is asked afterwards is answered afterwards.
        for (int turn = 0; turn < 3; ++turn)
            runTask(session->visitorConversations(u"a@example.com"_s));
        spinFor(5ms);
        EXPECT_TRUE(workplace() == before);
        EXPECT_THAT(banners, IsEmpty());
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
