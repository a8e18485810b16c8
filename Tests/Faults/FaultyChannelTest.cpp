#include "FaultFixture.h"

/// The live channel against everything that a service can say or fail to say on it.
namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Act = std::function<void(ServerChannel&)>;

struct ChannelFault {
    std::string name;
    Act act;
};

class FaultyChannelTest : public FaultTest {
protected:
    /// A message that arrives shows that the channel works, and its absence that a frame was lost.
    void expectMessageToArrive()
    {
        const auto before = session->messages().thread(u"c1"_s).size();
        const Message message = makeMessage(u"live%1"_s.arg(before), u"c1"_s);
        service.channel()->sendText(
            uR"({"type":"message","message":%1})"_s.arg(QString::fromUtf8(APIJSON::encoder.encode(message))));
        EXPECT_TRUE(waitUntil([&] { return session->messages().contains(u"c1"_s, message.id); }));
        EXPECT_EQ(session->messages().thread(u"c1"_s).size(), before + 1);
    }

    /// Commits every fault in turn, each on a channel that works; @p lost says whether each ends it.
    void expectNothingLostBy(const std::vector<ChannelFault>& faults, bool lost)
    {
        goToWork();
        for (const auto& [name, act] : faults) {
            SCOPED_TRACE(name);
            const Workplace before = workplace();
            const auto channels = service.channels().size();
            act(*service.channel());
            if (lost) {
                ASSERT_TRUE(waitUntil([&] { return service.channels().size() > channels; }));
                ASSERT_TRUE(waitUntil(
                    [&] { return session->socketConnected() && !service.channel()->texts().isEmpty(); }));
                EXPECT_THAT(service.channel()->texts(),
                            ElementsAre(uR"({"type":"viewing","conversationId":"c1"})"_s));
            }
            EXPECT_TRUE(workplace() == before);
            expectMessageToArrive();
            EXPECT_EQ(service.channels().size(), channels + (lost ? 1 : 0));
        }
        EXPECT_THAT(takeBanners(), IsEmpty()) << "the channel's troubles are no news to the agent";
        EXPECT_EQ(service.requests("GET", "/v1/agent/me").size(), 1U) << "and none for the sign-in";
    }
};

ChannelFault closing(const QByteArray& payload, const std::string& name)
{
    return {name, [payload](ServerChannel& channel) { channel.sendFrame(ServerChannel::closing, payload); }};
}

ChannelFault bytes(const char* name, QByteArray frame)
{
    return {name, [frame = std::move(frame)](ServerChannel& channel) { channel.sendRaw(frame); }};
}

TEST_F(FaultyChannelTest, ComesBackFromEveryEnd)
{
    std::vector<ChannelFault> faults{
        closing("", "a close frame without a code"),
        closing("\x03", "half a code"),
        closing("\x03\xE8\xFF\xFE", "a reason that is no text"),
        {"closed without a word", [](ServerChannel& channel) { channel.hangUp(); }},
        {"reset", [](ServerChannel& channel) { channel.reset(); }},
        {"text that is no UTF-8",
         [](ServerChannel& channel) { channel.sendFrame(ServerChannel::text, "{\"type\":\"\xFF\"}"); }},
        {"text that begins and never ends well",
         [](ServerChannel& channel) {
             channel.sendFrame(ServerChannel::text, "\"\xC3", false);
             channel.sendFrame(ServerChannel::continuation, "\x28\"");
         }},
        bytes("a frame beyond the limit",
              ServerChannel::frameHead(ServerChannel::text, SocketClient::maxMessageBytes + 1)),
        bytes("a frame longer than any can be", "\x81\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"),
        {"pieces without an end",
         [](ServerChannel& channel) {
             channel.sendFrame(ServerChannel::text, QByteArray(512 * 1024, 'x'), false);
             for (int piece = 0; piece < 16 && channel.isOpen(); ++piece)
                 channel.sendFrame(ServerChannel::continuation, QByteArray(512 * 1024, 'x'), false);
         }},
        bytes("reserved bits", QByteArray("\xF1\x02{}", 4)),
        bytes("a kind that does not exist", QByteArray("\x83\x02{}", 4)),
        bytes("a continuation of nothing", QByteArray("\x80\x02{}", 4)),
        bytes("a message within a message", QByteArray("\x01\x01{\x81\x02{}", 7)),
        bytes("a ping in pieces", QByteArray("\x09\x01x", 3)),
        bytes("a ping that is too long",
              ServerChannel::frameHead(ServerChannel::ping, 126) + QByteArray(126, 'x')),
    };
    for (const int code : {0,    999,  1000, 1001, 1002, 1003, 1004, 1005, 1006, 1007, 1008, 1009, 1010, 1011,
                           1012, 1013, 1014, 1015, 2999, 3000, 3999, 4000, 4001, 4401, 4999, 5000, 65535}) {
        const QByteArray payload{static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
        faults.push_back(closing(payload + "bye", "code " + std::to_string(code)));
    }
    expectNothingLostBy(faults, true);
    std::printf("%zu ends of the channel, as many reconnects\n", faults.size());
}

TEST_F(FaultyChannelTest, StaysUpWhenWhatArrivesIsOnlyUseless)
{
    const auto text = [](const char* name, const QString& frame) {
        return ChannelFault{name, [frame](ServerChannel& channel) { channel.sendText(frame); }};
    };
    const std::vector<ChannelFault> faults{
        text("nothing", QString()),
        text("no JSON", u"<html>"_s),
        text("JSON of another kind", u"[{\"type\":\"message\"}]"_s),
        text("nested beyond sense", QString(100'000, u'[')),
        text("a message without its members", uR"({"type":"message","message":{"_id":"m9"}})"_s),
        text("a type nobody knows", uR"({"type":"mesage","conversationId":"c1"})"_s),
        text("close to the limit", u"\"%1\""_s.arg(QString(4'000'000, u'x'))),
        bytes("a masked frame", QByteArray("\x81\x82\0\0\0\0{}", 8)),
        {"bytes that are no UTF-8",
         [](ServerChannel& channel) { channel.sendBinary("{\"type\":\"message\",\"x\":\"\xC3\x28\"}"); }},
        {"a message in single bytes, with pings between",
         [](ServerChannel& channel) {
             const QByteArray frame = R"({"type":"viewers","conversationId":"c9"})";
             for (qsizetype at = 0; at < frame.size(); ++at) {
                 channel.sendFrame(at == 0 ? ServerChannel::text : ServerChannel::continuation,
                                   frame.mid(at, 1), at == frame.size() - 1);
                 channel.sendFrame(ServerChannel::ping, {});
             }
         }},
        {"a thousand pings",
         [](ServerChannel& channel) {
             for (int count = 0; count < 1000; ++count)
                 channel.sendFrame(ServerChannel::ping, QByteArray(125, 'p'));
         }},
        {"pongs that nobody asked for",
         [](ServerChannel& channel) {
             for (int count = 0; count < 100; ++count)
                 channel.sendFrame(ServerChannel::pong, "x");
         }},
    };
    expectNothingLostBy(faults, false);
}

TEST_F(FaultyChannelTest, GoesOnTryingWhateverTheHandshakeIsAnswered)
{
    ScriptedService elsewhere;
    socketTimings.handshakeTimeout = 600ms;
    const auto page = [](int status) {
        return ScriptedAnswer{.status = status, .headers = {{"Content-Type", "text/html"}}, .body = "<html>"};
    };
    const std::pair<const char*, ScriptedAnswer> handshakes[] = {
        {"401", refusal(401, "expired")},
        {"403", refusal(403, "not you")},
        {"404 with a page", page(404)},
        {"500", ScriptedAnswer::json("", 500)},
        {"503 with a page", page(503)},
        {"200 with a page", page(200)},
        {"redirect elsewhere", ScriptedAnswer::redirect(elsewhere.url().toEncoded() + "/ws", 307)},
        {"no key", ScriptedAnswer::rawBytes("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                                            "Connection: Upgrade\r\n\r\n")},
        {"nothing", ScriptedAnswer::stall()},
        {"reset", ScriptedAnswer::reset()},
        {"a head without end", ScriptedAnswer::endless("HTTP/1.1 101 Switching Protocols\r\nX: ")},
        {"a status line without end", ScriptedAnswer::endless("HTTP/1.1 ")},
    };
    for (const auto& [name, answer] : handshakes) {
        SCOPED_TRACE(name);
        repair();
        const auto before = service.upgradeRequests().size();
        const auto bytesBefore = service.endlessBytes();
        for (int time = 0; time < 2; ++time)
            service.answer("GET", "/ws", answer);
        watched(signIn());
        ASSERT_TRUE(waitUntil([&] { return service.upgradeRequests().size() == before + 2; }));
        EXPECT_FALSE(session->socketConnected());
        EXPECT_EQ(session->conversations().size(), 2) << "the inbox needs no channel";
        ASSERT_TRUE(waitUntil([&] { return session->socketConnected(); }));
        EXPECT_EQ(service.upgradeRequests().size(), before + 3);
        EXPECT_TRUE(session->token()) << "only the identity request signs out";
        EXPECT_LT(service.endlessBytes() - bytesBefore, 32 * 1024 * 1024) << "memory must not follow it";
    }
    EXPECT_THAT(banners, IsEmpty());
    EXPECT_THAT(elsewhere.upgradeRequests(), IsEmpty());
}

TEST_F(FaultyChannelTest, AServiceThatAcceptsAndNeverSpeaksIsNoService)
{
    repair();
    service.setAnswersPings(false);
    signIn();
    ASSERT_TRUE(waitUntil([this] { return service.channel() && service.channel()->pingCount() == 1; }));
    EXPECT_FALSE(session->socketConnected());
    EXPECT_FALSE(session->socket().pendingReconnect()) << "silence alone ends no connection";
    expectMessageToArrive();
    EXPECT_TRUE(session->socketConnected());
}

} // namespace

} // namespace orvia::test
