#include "DemoFixture.h"

#include <algorithm>

namespace orvia::test {

using testing::ElementsAre;

class LiveChannelTest : public DemoTest {
protected:
    /// Sends something that every channel gets last, and waits for it: what came before has then arrived.
    void settle(std::initializer_list<const Listener*> listeners)
    {
        SocketEvent mark;
        mark.type = u"mark"_s;
        service.emitEvent(mark);
        for (const Listener* listener : listeners)
            EXPECT_TRUE(listener->waitFor("mark"_L1));
    }

    bool framesArrived(std::size_t count)
    {
        return waitUntil([&] { return service.frames().size() >= count; });
    }
};

TEST_F(LiveChannelTest, MessagesAndDraftsReachTheOthersWhoServeTheProduct)
{
    const auto mara = listener(u"mara"_s);
    const auto dana = listener(u"dana"_s);
    const auto tomas = listener(u"tomas"_s);
    const Message posted = service.postAsVisitor(u"helen-brandt"_s, u"It does not fit"_s);
    dana->socket.sendTyping(u"helen-brandt"_s, u"The first"_s);
    dana->socket.sendTyping(u"helen-brandt"_s, QString());
    tomas->socket.sendTyping(u"helen-brandt"_s, u"not mine"_s);
    ASSERT_TRUE(framesArrived(3));
    settle({mara.get(), dana.get(), tomas.get()});

    const auto messages = mara->ofType("message"_L1);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].message, posted);
    const auto conversations = mara->ofType("conversation"_L1);
    ASSERT_EQ(conversations.size(), 1U);
    EXPECT_EQ(conversations[0].conversation, service.thread(u"helen-brandt"_s).conversation);
    const auto typing = mara->ofType("typing"_L1);
    ASSERT_EQ(typing.size(), 2U);
    EXPECT_EQ(typing[0].from, u"agent"_s);
    EXPECT_EQ(typing[0].agentId, u"dana"_s);
    EXPECT_EQ(typing[0].agentName, u"Dana Whitfield"_s);
    EXPECT_EQ(typing[0].preview, u"The first"_s);
    EXPECT_EQ(typing[1].preview, QString());
    EXPECT_TRUE(dana->ofType("typing"_L1).empty());
    EXPECT_EQ(tomas->events.size(), 1U) << "Tomás does not serve coffee";
}

TEST_F(LiveChannelTest, ViewersAreTheWholeListAndEndWithTheChannel)
{
    const ViewerAgent maraViewing{u"mara"_s, u"Mara Ellison"_s};
    const ViewerAgent danaViewing{u"dana"_s, u"Dana Whitfield"_s};
    const auto mara = listener(u"mara"_s);
    auto dana = listener(u"dana"_s);
    auto danaAgain = listener(u"dana"_s);
    const auto viewers = [&](std::size_t count) {
        EXPECT_TRUE(mara->waitFor("viewers"_L1, count));
        return mara->ofType("viewers"_L1).at(count - 1);
    };
    mara->socket.sendViewing(u"helen-brandt"_s);
    EXPECT_THAT(*viewers(1).agents, ElementsAre(maraViewing));
    dana->socket.sendViewing(u"helen-brandt"_s);
    EXPECT_THAT(*viewers(2).agents, ElementsAre(maraViewing, danaViewing));
    danaAgain->socket.sendViewing(u"helen-brandt"_s);
    ASSERT_TRUE(framesArrived(3));
    dana.reset();
    ASSERT_TRUE(waitUntil([&] { return service.live().channelCount() == 2; }));
    settle({mara.get()});
    EXPECT_EQ(mara->ofType("viewers"_L1).size(), 2U) << "Dana is still there on her other screen";
    danaAgain.reset();
    EXPECT_THAT(*viewers(3).agents, ElementsAre(maraViewing));
    const auto joanna = listener(u"joanna"_s);
    ASSERT_TRUE(joanna->waitFor("viewers"_L1)) << "newcomers learn who looks";
    EXPECT_EQ(joanna->ofType("viewers"_L1)[0].conversationId, u"helen-brandt"_s);
}

TEST_F(LiveChannelTest, OnlyBearersOfATokenAreLetIn)
{
    QWebSocket forger;
    bool failed = false;
    QObject::connect(&forger, qOverload<QAbstractSocket::SocketError>(&QWebSocket::error),
                     [&] { failed = true; });
    forger.open(*SocketClient::socketURL(service.origin(), u"forged"_s));
    EXPECT_TRUE(waitUntil([&] { return failed; }));
    EXPECT_EQ(service.live().channelCount(), 0U);
}

TEST_F(LiveChannelTest, TheTeamsLifeShowsEveryLiveFeature)
{
    demo::Options lively = options(now);
    lively.lively = true;
    lively.beat = std::chrono::milliseconds(5);
    demo::DemoService livelyService(lively);
    ASSERT_TRUE(livelyService.listen());
    Listener mara(livelyService.origin(), livelyService.tokenOf(u"mara"_s));
    const auto expect = [&mara](const char* feature, const std::function<bool(const SocketEvent&)>& matches) {
        EXPECT_TRUE(waitUntil([&] { return std::ranges::any_of(mara.events, matches); })) << feature;
    };
    expect("a visitor types", [](const auto& e) { return e.from == u"visitor"_s && e.preview; });
    expect("a draft", [](const auto& e) { return e.agentId && e.preview && !e.preview->isEmpty(); });
    expect("its end", [](const auto& e) { return e.agentId && e.preview && e.preview->isEmpty(); });
    expect("viewers", [](const auto& e) { return e.agents && !e.agents->empty(); });
    expect("no viewers", [](const auto& e) { return e.agents && e.agents->empty(); });
    expect("a receipt", [](const auto& e) { return e.type == u"read"_s && e.by == u"visitor"_s; });
    for (const auto sender : {MessageSender::visitor, MessageSender::agent, MessageSender::note})
        expect("a message", [sender](const auto& e) { return e.message && e.message->sender == sender; });
}

} // namespace orvia::test
