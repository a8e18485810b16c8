#include "DemoFixture.h"

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
            EXPECT_TRUE(listener->waitFor("mark"_L1, ++m_marks[listener]));
    }

    bool framesArrived(std::size_t count)
    {
        return waitUntil([&] { return service.frames().size() >= count; });
    }

private:
    std::map<const Listener*, std::size_t> m_marks;
};

TEST_F(LiveChannelTest, MessagesReachThoseWhoServeTheProduct)
{
    const auto mara = listener(u"mara"_s);
    const auto tomas = listener(u"tomas"_s);
    const Message posted = service.postAsVisitor(u"helen-brandt"_s, u"It does not fit"_s);
    settle({mara.get(), tomas.get()});
    const auto messages = mara->ofType("message"_L1);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[0].message, posted);
    EXPECT_EQ(messages[0].conversationId, u"helen-brandt"_s);
    const auto conversations = mara->ofType("conversation"_L1);
    ASSERT_EQ(conversations.size(), 1U);
    EXPECT_EQ(conversations[0].conversation, service.thread(u"helen-brandt"_s).conversation);
    EXPECT_EQ(tomas->events.size(), 1U) << "Tomás does not serve coffee";
}

TEST_F(LiveChannelTest, DraftsGoToTheOthers)
{
    const auto mara = listener(u"mara"_s);
    const auto dana = listener(u"dana"_s);
    const auto tomas = listener(u"tomas"_s);
    dana->socket.sendTyping(u"helen-brandt"_s, u"The first"_s);
    dana->socket.sendTyping(u"helen-brandt"_s, QString());
    tomas->socket.sendTyping(u"helen-brandt"_s, u"not mine"_s);
    ASSERT_TRUE(framesArrived(3));
    settle({mara.get(), dana.get(), tomas.get()});
    const auto typing = mara->ofType("typing"_L1);
    ASSERT_EQ(typing.size(), 2U);
    EXPECT_EQ(typing[0].from, u"agent"_s);
    EXPECT_EQ(typing[0].agentId, u"dana"_s);
    EXPECT_EQ(typing[0].agentName, u"Dana Whitfield"_s);
    EXPECT_EQ(typing[0].preview, u"The first"_s);
    EXPECT_EQ(typing[1].preview, QString());
    EXPECT_TRUE(dana->ofType("typing"_L1).empty());
    EXPECT_TRUE(tomas->ofType("typing"_L1).empty());
}

TEST_F(LiveChannelTest, ViewersAreTheWholeListAndEndWithTheChannel)
{
    const auto mara = listener(u"mara"_s);
    auto dana = listener(u"dana"_s);
    const auto danaAgain = listener(u"dana"_s);
    const auto viewers = [&](std::size_t count) {
        EXPECT_TRUE(mara->waitFor("viewers"_L1, count));
        return mara->ofType("viewers"_L1).at(count - 1);
    };
    mara->socket.sendViewing(u"helen-brandt"_s);
    EXPECT_THAT(*viewers(1).agents, ElementsAre(ViewerAgent{u"mara"_s, u"Mara Ellison"_s}));
    dana->socket.sendViewing(u"helen-brandt"_s);
    EXPECT_THAT(*viewers(2).agents, ElementsAre(ViewerAgent{u"mara"_s, u"Mara Ellison"_s},
                                                ViewerAgent{u"dana"_s, u"Dana Whitfield"_s}));
    danaAgain->socket.sendViewing(u"helen-brandt"_s);
    ASSERT_TRUE(framesArrived(3));
    dana.reset();
    ASSERT_TRUE(waitUntil([&] { return service.live().channelCount() == 2; }));
    settle({mara.get()});
    EXPECT_EQ(mara->ofType("viewers"_L1).size(), 2U) << "Dana is still there on her other screen";

    danaAgain->socket.sendViewing(u"ravi-menon"_s);
    EXPECT_EQ(viewers(3).conversationId, u"helen-brandt"_s);
    EXPECT_EQ(viewers(3).agents->size(), 1U);
    EXPECT_EQ(viewers(4).conversationId, u"ravi-menon"_s);
    danaAgain->socket.sendViewing(std::nullopt);
    EXPECT_TRUE(viewers(5).agents->empty());

    const auto joanna = listener(u"joanna"_s);
    ASSERT_TRUE(joanna->waitFor("viewers"_L1));
    EXPECT_EQ(joanna->ofType("viewers"_L1)[0].conversationId, u"helen-brandt"_s)
        << "newcomers learn who looks";
}

TEST_F(LiveChannelTest, StrangeFramesAreWithoutEffect)
{
    const auto mara = listener(u"mara"_s);
    const auto dana = listener(u"dana"_s);
    QWebSocket stranger;
    stranger.open(*SocketClient::socketURL(service.origin(), service.tokenOf(u"dana"_s)));
    ASSERT_TRUE(waitUntil([&] { return stranger.isValid(); }));
    const QStringList frames{u"{"_s,
                             u"17"_s,
                             QString(),
                             u"{\"conversationId\":\"helen-brandt\"}"_s,
                             u"{\"type\":\"shouting\",\"conversationId\":\"helen-brandt\"}"_s,
                             u"{\"type\":\"typing\",\"conversationId\":\"helen-brandt\",\"preview\":4}"_s,
                             u"{\"type\":\"typing\",\"conversationId\":\"nobody\",\"preview\":\"a\"}"_s,
                             u"{\"type\":\"viewing\"}"_s,
                             u"{\"type\":\"viewing\",\"conversationId\":\"hiro-tanaka\"}"_s,
                             u"{\"type\":\"read\",\"conversationId\":7}"_s};
    for (const QString& frame : frames)
        stranger.sendTextMessage(frame);
    ASSERT_TRUE(framesArrived(static_cast<std::size_t>(frames.size())));
    settle({mara.get(), dana.get()});
    EXPECT_EQ(mara->events.size(), 1U);
    EXPECT_TRUE(stranger.isValid());
    EXPECT_TRUE(service.live().viewedConversations().isEmpty());
}

TEST_F(LiveChannelTest, OnlyBearersOfATokenAreLetIn)
{
    const auto isRefused = [this](const QString& token) {
        QWebSocket socket;
        bool failed = false;
        QObject::connect(&socket, qOverload<QAbstractSocket::SocketError>(&QWebSocket::error),
                         [&] { failed = true; });
        socket.open(*SocketClient::socketURL(service.origin(), token));
        return waitUntil([&] { return failed || socket.isValid(); }) && failed;
    };
    EXPECT_TRUE(isRefused(u"forged"_s));
    EXPECT_FALSE(isRefused(service.tokenOf(u"dana"_s)));
    service.refuseChannels(true);
    EXPECT_TRUE(isRefused(service.tokenOf(u"dana"_s)));
}

} // namespace orvia::test
