#include "FaultFixture.h"

/// The live channel against what a service can say or fail to say on it.
namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// What a service says, in bytes.
struct Utterance {
    std::string name;
    QByteArray bytes;
};

QByteArray frame(ServerChannel::Opcode opcode, const QByteArray& payload, bool final = true)
{
    return ServerChannel::frameHead(opcode, static_cast<quint64>(payload.size()), final) + payload;
}

class FaultyChannelTest : public FaultTest {
protected:
    /// Says each in turn, each on a channel that works; @p lost tells whether each ends it.
    void expectNothingLostBy(const std::vector<Utterance>& utterances, bool lost)
    {
        goToWork();
        for (const auto& [name, bytes] : utterances) {
            SCOPED_TRACE(name);
            const Workplace before = workplace();
            const auto channels = service.channels().size();
            service.channel()->sendRaw(bytes);
            if (bytes.isEmpty())
                service.channel()->hangUp();
            if (lost) {
                ASSERT_TRUE(waitUntil([&] { return service.channels().size() > channels; }));
                ASSERT_TRUE(waitUntil(
                    [&] { return session->socketConnected() && !service.channel()->texts().isEmpty(); }));
                EXPECT_THAT(service.channel()->texts(),
                            ElementsAre(uR"({"type":"viewing","conversationId":"c1"})"_s));
            }
            EXPECT_TRUE(workplace() == before);

            // A message that arrives shows that the channel works, and its absence that a frame was lost.
            const Message message = makeMessage(u"live%1"_s.arg(before.thread.size()), u"c1"_s);
            service.channel()->sendText(uR"({"type":"message","message":%1})"_s.arg(
                QString::fromUtf8(APIJSON::encoder.encode(message))));
            EXPECT_TRUE(waitUntil([&] { return session->messages().contains(u"c1"_s, message.id); }));
            EXPECT_EQ(session->messages().thread(u"c1"_s).size(), before.thread.size() + 1);
            EXPECT_EQ(service.channels().size(), channels + (lost ? 1 : 0));
        }
        EXPECT_THAT(takeBanners(), IsEmpty()) << "the channel's troubles are no news to the agent";
        EXPECT_EQ(service.requests("GET", "/v1/agent/me").size(), 1U) << "and none for the sign-in";
    }
};

TEST_F(FaultyChannelTest, ComesBackFromEveryEnd)
{
    const QByteArray piece(512 * 1024, 'x');
    std::vector<Utterance> ends{
        {"the connection's end without a word", ""},
        {"a close frame without a code", frame(ServerChannel::closing, "")},
        {"half a code", frame(ServerChannel::closing, "\x03")},
        {"a reason that is no text", frame(ServerChannel::closing, "\x03\xE8\xFF\xFE")},
        {"text that begins and never ends well",
         frame(ServerChannel::text, "\"\xC3", false) + frame(ServerChannel::continuation, "\x28\"")},
        {"a frame beyond the limit",
         ServerChannel::frameHead(ServerChannel::text, SocketClient::maxMessageBytes + 1)},
        {"a frame longer than any can be", "\x81\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"},
        {"pieces without an end", frame(ServerChannel::text, piece, false)
                                      + frame(ServerChannel::continuation, piece, false).repeated(16)},
        {"reserved bits", "\xF1\x02{}"},
        {"a kind that does not exist", "\x83\x02{}"},
        {"a message within a message", "\x01\x01{\x81\x02{}"},
        {"a ping that is too long", frame(ServerChannel::ping, QByteArray(126, 'x'))},
    };
    for (const int code : {0, 1000, 1001, 1006, 1008, 1012, 4401, 65535}) {
        const QByteArray payload{static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)};
        ends.push_back({"code " + std::to_string(code), frame(ServerChannel::closing, payload + "bye")});
    }
    expectNothingLostBy(ends, true);
}

TEST_F(FaultyChannelTest, StaysUpWhenWhatArrivesIsOnlyUseless)
{
    QByteArray singly = frame(ServerChannel::text, "{", false);
    for (const char byte : R"("type":"viewers","conversationId":"c9")"_ba)
        singly +=
            frame(ServerChannel::continuation, QByteArray(1, byte), false) + frame(ServerChannel::ping, {});
    singly += frame(ServerChannel::continuation, "}");
    expectNothingLostBy(
        {
            {"nothing", frame(ServerChannel::text, "")},
            {"no JSON", frame(ServerChannel::text, "<html>")},
            {"nested beyond sense", frame(ServerChannel::text, QByteArray(100'000, '['))},
            {"a message without its members",
             frame(ServerChannel::text, R"({"type":"message","message":{"_id":"m9"}})")},
            {"close to the limit", frame(ServerChannel::text, '"' + QByteArray(4'000'000, 'x') + '"')},
            {"a masked frame", QByteArray("\x81\x82\0\0\0\0{}", 8)},
            {"bytes that are no UTF-8",
             frame(ServerChannel::binary, "{\"type\":\"message\",\"x\":\"\xC3\x28\"}")},
            {"a message in single bytes, with pings between", singly},
            {"a thousand pings", frame(ServerChannel::ping, QByteArray(125, 'p')).repeated(1000)},
        },
        false);
}

TEST_F(FaultyChannelTest, GoesOnTryingWhateverTheHandshakeIsAnswered)
{
    ScriptedService elsewhere;
    socketTimings.handshakeTimeout = 600ms;
    const std::pair<const char*, ScriptedAnswer> handshakes[] = {
        {"401", refusal(401, "expired")},
        {"200 with a page", ScriptedAnswer::json("<html>")},
        {"redirect elsewhere", ScriptedAnswer::redirect(elsewhere.url().toEncoded() + "/ws", 307)},
        {"no key", ScriptedAnswer::rawBytes("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                                            "Connection: Upgrade\r\n\r\n")},
        {"nothing", ScriptedAnswer::stall()},
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

/// A cable that was cut, an address that has changed, a peer without power: the old connections carry nothing
/// more, in neither direction, while new ones work.
TEST_F(FaultyChannelTest, FindsOutADeadPeerAndReplacesIt)
{
    network = std::make_unique<NetworkSession>(NetworkSession::Limits{.timeout = 500ms}, nullptr);
    socketTimings.pingInterval = 10ms;
    socketTimings.acknowledgementTimeout = 200ms;
    Session& made = goToWork();
    const Workplace before = workplace();
    for (std::size_t round = 1; round <= 3; ++round) {
        SCOPED_TRACE(round);
        Notifications changes(made, &Session::socketConnectedChanged);
        service.vanish();
        ASSERT_TRUE(
            waitUntil([&] { return service.channels().size() == round + 1 && made.socketConnected(); }));
        EXPECT_EQ(changes.count, 2) << "down once, up once";
        // Each kept connection that is dead may cost one attempt.
        bool isRefreshed = false;
        for (int attempt = 0; attempt < 7 && !isRefreshed; ++attempt) {
            runTask(made.refreshConversations());
            const QStringList told = takeBanners();
            isRefreshed = told.isEmpty();
            EXPECT_THAT(told, testing::Each(u"Network error: The request timed out."_s));
        }
        EXPECT_TRUE(isRefreshed);
        EXPECT_TRUE(workplace() == before);
    }
    spinFor(3 * socketTimings.acknowledgementTimeout);
    EXPECT_EQ(service.channels().size(), 4U) << "a channel that is only idle stays";
}

} // namespace

} // namespace orvia::test
