#include "FaultFixture.h"

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

/// @p otherOrigin is somewhere that must not hear of it.
std::vector<Fault> faults(const QByteArray& otherOrigin)
{
    return {
        {"reset before the answer", ScriptedAnswer::reset(), u"?"_s},
        {"closed before the answer", raw(""), u"?"_s},
        {"reset within the body",
         raw("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{\"a\"", Ending::reset), u"?"_s},
        {"cut within the body", ScriptedAnswer::truncated("{}", 10), u"?"_s},
        {"cut within a chunk", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\n{\"a\":"), u"?"_s},
        {"no last chunk", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n"), u"?"_s},
        {"a chunk of no size", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n{}\r\n"), u"?"_s},
        {"cut within the head", raw("HTTP/1.1 200 OK\r\nContent-Le"), u"?"_s},
        {"a length below zero", raw("HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\n{"), u"?"_s},
        {"a length beyond every memory", raw("HTTP/1.1 200 OK\r\nContent-Length: 9000000000000000000\r\n\r\n{"), u"?"_s},
        {"not HTTP", raw("SSH-2.0-nothing here\r\n\r\n"), u"?"_s},
        {"another protocol", raw("HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\n\r\n"), u"?"_s},
        {"body that is not what was packed", raw("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 4\r\n\r\nxxxx"), u"?"_s},
        {"200 with nothing", ScriptedAnswer::json(""), undecodable},
        {"204", ScriptedAnswer::json("", 204), undecodable},
        {"200 with a page", page(200, "<html>Welcome to our Wi-Fi</html>"), undecodable},
        {"200 with half a document", ScriptedAnswer::json("{\"conversations\":[{"), undecodable},
        {"200 in UTF-16", ScriptedAnswer::json(QByteArray("\xFF\xFE{\0}\0", 6)), undecodable},
        {"304", ScriptedAnswer::json("", 304), u"Request failed (304)"_s},
        {"redirect elsewhere", ScriptedAnswer::redirect(otherOrigin + "/v1/agent/me", 307),
         u"Request failed (307)"_s},
        {"redirect to nowhere", ScriptedAnswer::redirect("", 302), u"?"_s},
        {"redirect without an address", {.status = 301}, u"?"_s},
        {"redirect in circles", {}, u"?"_s},
        {"429 with JSON", refusal(429, "Slow down."), u"Slow down."_s},
        {"404 with nothing", page(404, ""), u"Request failed (404)"_s},
        {"500 with other JSON", ScriptedAnswer::json("[\"error\"]", 500), u"Request failed (500)"_s},
        {"502 with a page", page(502, "<html>Bad gateway</html>"), u"Request failed (502)"_s},
        {"503 with half a body", ScriptedAnswer::rawBytes("HTTP/1.1 503 Busy\r\nContent-Length: 50\r\n\r\n{\"error\":"), u"?"_s},
        {"an endless success", ScriptedAnswer::endless("HTTP/1.1 200 OK\r\n\r\n"),
         u"Network error: The answer is too large."_s},
        {"an endless refusal", ScriptedAnswer::endless("HTTP/1.1 500 Oh\r\n\r\n"),
         u"Network error: The answer is too large."_s},
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

class FaultyAnswersTest : public FaultTest {};

TEST_F(FaultyAnswersTest, AreToldInTheBannerAndChangeNothing)
{
    timings.searchDebounce = 1ms;
    ScriptedService elsewhere;
    Session& made = goToWork();
    const Workplace before = workplace();
    int injected = 0;
    for (Fault fault : faults(elsewhere.url().toEncoded())) {
        for (const Operation& operation : operations) {
            SCOPED_TRACE(std::string(operation.name) + ": " + fault.name);
            if (fault.name == std::string("redirect in circles"))
                fault.answer = ScriptedAnswer::redirect(operation.path, 307);
            service.always(operation.method, operation.path, fault.answer);
            operation.run(made);
            ++injected;
            const QStringList told = takeBanners();
            if (fault.text == u"?") {
                if (operation.name == std::string("refresh") || operation.name == std::string("reply")) printf("%-32s %-8s %s\n", fault.name, operation.name, qPrintable(told.join(u'|')));
            } else
                EXPECT_THAT(told, ElementsAre(shown(fault.text)));
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
    std::printf("endless %lld, injected %d\n", service.endlessBytes(), injected);
}

} // namespace

} // namespace orvia::test
