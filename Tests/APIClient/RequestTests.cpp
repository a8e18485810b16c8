#include "ClientFixture.h"

#include "APIClient/Perform.h"

#include <QThread>
#include <QThreadPool>

#include <semaphore>

namespace orvia::test {

namespace {

using namespace std::chrono_literals;
using testing::IsEmpty;

class Request : public ClientFixture {
protected:
    /// The outcome of an operation whose answer nobody reads, when the service gives @p answer.
    Outcome<void> outcomeOf(ScriptedAnswer answer)
    {
        service.answer("POST", "/v1/agent/conversations/c1/mute", std::move(answer));
        return runTask(client().setMuted(u"c1"_s, true));
    }
};

TEST_F(Request, DropsThePathOfTheOriginAndKeepsItsQuery)
{
    service.always("GET", "/v1/agent/me",
                   ScriptedAnswer::json(QByteArray("{\"products\":[],\"agent\":") + agentJSON + '}'));
    service.always("GET", "/v1/agent/search", ScriptedAnswer::json("{\"results\":[]}"));
    const QUrl origin(service.url().toString() + u"/base/path?tenant=1"_s);
    runTask(APIClient(origin, {}, &session).me());
    runTask(APIClient(origin, {}, &session).search(u"x"_s, 5));
    ASSERT_EQ(service.requests().size(), 2U);
    EXPECT_EQ(service.requests().at(0).target, "/v1/agent/me?tenant=1");
    EXPECT_EQ(service.requests().at(1).target, "/v1/agent/search?q=x&limit=5");
    EXPECT_EQ(service.requests().at(0).header("Authorization"), std::nullopt) << "nobody has signed in";
}

TEST_F(Request, EncodesWhatAnIdentifierMustNotSayInAPath)
{
    service.answer("GET", "/v1/agent/conversations/a%3Fb%23%C3%A9%20%25",
                   ScriptedAnswer::json("{\"error\":\"none\"}", 404));
    EXPECT_EQ(runTask(client().conversationDetail(u"a?b#é %"_s)).error, APIError(u"none"_s, 404));
}

TEST_F(Request, FailsWithoutAURL)
{
    for (const QUrl& broken : {QUrl(), QUrl(u"http://h:port"_s)})
        EXPECT_EQ(runTask(APIClient(broken, u"t0k3n"_s, &session).teammates()).error,
                  APIError(u"Invalid server URL"_s));
}

TEST_F(Request, TellsTheFailuresThatTheServiceReports)
{
    const std::pair<ScriptedAnswer, APIError> cases[] = {
        {ScriptedAnswer::json(R"({"error":"No such “conversation”","code":7})", 404),
         APIError(u"No such “conversation”"_s, 404)},
        {ScriptedAnswer::json(R"({"error":""})", 400), APIError(QString(), 400)},
        {ScriptedAnswer::json(R"({"error":7})", 400), APIError(u"Request failed (400)"_s, 400)},
        {ScriptedAnswer::json("", 401), APIError(u"Request failed (401)"_s, 401)},
        {ScriptedAnswer::json(R"({"error":"teapot"})", 418), APIError(u"teapot"_s, 418)},
        {ScriptedAnswer::json(R"({"error":"proxy"})", 407), APIError(u"proxy"_s, 407)},
        {ScriptedAnswer::json("<html>Bad gateway</html>", 599), APIError(u"Request failed (599)"_s, 599)},
    };
    for (const auto& [answer, error] : cases) {
        SCOPED_TRACE(answer.status);
        EXPECT_EQ(outcomeOf(answer).error, error);
    }
}

TEST_F(Request, AcceptsAnyDocumentWhereNobodyReadsTheAnswer)
{
    for (const char* body : {"17", "{}", "null", "\"x\"", " [1, 2] "})
        EXPECT_EQ(outcomeOf(ScriptedAnswer::json(body)).errorMessage(), QString()) << body;
    EXPECT_EQ(outcomeOf(ScriptedAnswer::json("{}", 299)).errorMessage(), QString());
    EXPECT_EQ(outcomeOf(ScriptedAnswer::json("{} {}")).error,
              APIError(u"Could not decode server response"_s));
}

/// A connection that ends before the answer is made anew by the toolkit, a few times. When that was not
/// enough, what changes nothing is asked once more, and nothing else.
TEST_F(Request, IsRepeatedOnceUnansweredWhenItChangesNothing)
{
    service.always("POST", "/v1/agent/conversations/c1/mute", ScriptedAnswer::reset());
    EXPECT_EQ(runTask(client().setMuted(u"c1"_s, true)).error,
              APIError(u"Network error: Connection closed"_s));
    const std::size_t attempts = service.requests().size();

    const ScriptedAnswer whole = ScriptedAnswer::json("{\"teammates\":[]}");
    for (const std::size_t unanswered : {attempts, 2 * attempts}) {
        NetworkSession fresh;
        std::size_t asked = 0;
        service.always("GET", "/v1/agent/teammates", [&](const ReceivedRequest&) {
            return asked++ < unanswered ? ScriptedAnswer::reset() : whole;
        });
        const auto outcome = runTask(APIClient(service.url(), {}, &fresh).teammates());
        EXPECT_EQ(outcome.error.has_value(), unanswered > attempts) << asked;
    }
}

TEST_F(Request, BoundsTheSizeOfAnAnswer)
{
    NetworkSession small(NetworkSession::Limits{.timeout = 10s, .maxBodyBytes = 1000}, nullptr);
    const auto outcomeOfSize = [&](qsizetype size) {
        service.answer("POST", "/v1/agent/devices",
                       ScriptedAnswer::json('"' + QByteArray(size - 2, 'x') + '"'));
        return runTask(APIClient(service.url(), {}, &small).registerDevice(u"macos"_s, u"00"_s));
    };
    EXPECT_EQ(outcomeOfSize(1000).errorMessage(), QString());
    EXPECT_EQ(outcomeOfSize(1001).errorMessage(), u"Network error: The answer is too large."_s);
}

TEST_F(Request, WaitsForAnAnswerThatArrivesSlowly)
{
    NetworkSession impatient(NetworkSession::Limits{.timeout = 500ms}, nullptr);
    ScriptedAnswer slow = ScriptedAnswer::json("{\"teammates\":[]}" + QByteArray(50, ' '));
    slow.pause = 20ms;
    service.answer("GET", "/v1/agent/teammates", slow);
    EXPECT_EQ(runTask(APIClient(service.url(), {}, &impatient).teammates()).errorMessage(), QString());
}

TEST_F(Request, FollowsARedirectWithinTheOriginWithTheToken)
{
    // The toolkit now and then asks the first address twice.
    service.always("GET", "/v1/agent/teammates", ScriptedAnswer::redirect("/elsewhere?x=1"));
    service.answer("GET", "/elsewhere", ScriptedAnswer::json("{\"teammates\":[]}"));
    EXPECT_EQ(runTask(client().teammates()).errorMessage(), QString());
    ASSERT_GE(service.requests().size(), 2U);
    EXPECT_EQ(service.requests().back().target, "/elsewhere?x=1");
    EXPECT_EQ(service.requests().back().header("Authorization"), "Bearer t0k3n");
}

TEST_F(Request, NeverFollowsARedirectToAnotherOrigin)
{
    ScriptedService other;
    for (const int status : {301, 303, 308}) {
        service.answer("GET", "/v1/agent/teammates",
                       ScriptedAnswer::redirect(other.url().toEncoded() + "/v1/agent/teammates", status));
        EXPECT_EQ(runTask(client().teammates()).error,
                  APIError(u"Request failed (%1)"_s.arg(status), status));
    }
    service.answer("GET", "/v1/agent/teammates", ScriptedAnswer::redirect("file:///etc/hostname"));
    EXPECT_EQ(runTask(client().teammates()).error, APIError(u"Request failed (302)"_s, 302));
    EXPECT_THAT(other.requests(), IsEmpty());
}

TEST_F(Request, EndsWithTheSessionThatCarriesIt)
{
    auto shortLived = std::make_unique<NetworkSession>();
    service.answer("GET", "/v1/agent/teammates", ScriptedAnswer::stall());
    const auto waiting = startTask(APIClient(service.url(), {}, shortLived.get()).teammates());
    ASSERT_TRUE(waitUntil([this] { return !service.requests().empty(); }));
    const APIClient orphan(service.url(), {}, shortLived.get());
    shortLived.reset();
    ASSERT_TRUE(waitUntil([&] { return waiting->finished(); }));
    EXPECT_TRUE(waiting->errorMessage().startsWith(u"Network error: "_s));
    EXPECT_TRUE(runTask(orphan.teammates()).errorMessage().startsWith(u"Network error: "_s));
    EXPECT_EQ(service.requests().size(), 1U);
}

TEST_F(Request, EndsWithTheSessionWhileItsAnswerIsRead)
{
    auto shortLived = std::make_unique<NetworkSession>();
    service.answer("GET", "/probe",
                   ScriptedAnswer::json(QByteArray(NetworkSession::workerThreshold, ' ') + "{}"));
    std::binary_semaphore begun(0);
    std::binary_semaphore mayEnd(0);
    const auto isLost = [&](const NetworkSession::Answer& answer) {
        if (!answer.transportError) {
            begun.release();
            mayEnd.acquire();
        }
        return answer.transportError.has_value();
    };
    const QNetworkRequest request(service.url().resolved(QUrl(u"/probe"_s)));
    const auto waiting = startTask(shortLived->perform(request, "GET", {}, isLost));
    ASSERT_TRUE(waitUntil([&] { return begun.try_acquire(); }));
    shortLived.reset();
    EXPECT_TRUE(waiting->finished()) << "there may be no further turn of the event loop";
    EXPECT_EQ(waiting->value, true);
    mayEnd.release();
    QThreadPool::globalInstance()->waitForDone();
}

TEST_F(Request, IsReadOffTheMainThread)
{
    const auto threadOf = [this](qsizetype size) {
        service.answer("GET", "/probe", ScriptedAnswer::json('"' + QByteArray(size - 2, 'x') + '"'));
        const auto read = [](const NetworkSession::Answer& answer) {
            EXPECT_TRUE(answer.status) << answer.transportError.value_or(QString()).toStdString();
            return QThread::currentThread();
        };
        return runTask(session.perform(QNetworkRequest(service.url().resolved(QUrl(u"/probe"_s))), "GET", {},
                                       read))
            .value;
    };
    const auto main = QThread::currentThread();
    const auto network = threadOf(NetworkSession::workerThreshold - 1);
    EXPECT_NE(network, main);
    const auto worker = threadOf(NetworkSession::workerThreshold);
    EXPECT_NE(worker, main);
    EXPECT_NE(worker, network) << "other answers wait for a large one";
}

} // namespace
} // namespace orvia::test
