#include "SessionFixture.h"

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class LiveUpdatesTest : public SessionFixture {
protected:
    /// A signed-in session with c1 in its inbox, fed through the real channel.
    Session& start()
    {
        scriptInbox({makeConversation(u"c1"_s, 30), makeConversation(u"c2"_s, 20)});
        Session& made = connectLive();
        made.socket().onSend = [this](const QString& text) { sent.append(text); };
        return made;
    }

    /// Sends a frame from the service and waits until the session has taken it.
    void receive(const QByteArray& frame)
    {
        service.channel()->sendText(QString::fromUtf8(frame));
        // Frames are applied in order, so that the mark of a later one says that this one is done.
        const QString marker = u"marker%1"_s.arg(++m_markers);
        service.channel()->sendText(
            u"{\"type\":\"viewers\",\"conversationId\":\"%1\",\"agents\":[{\"id\":\"v\",\"name\":\"V\"}]}"_s
                .arg(marker));
        ASSERT_TRUE(waitUntil([&] { return session->viewers().contains(marker); }));
    }

    void receiveMessage(const Message& message, const QByteArray& members = {})
    {
        receive("{\"type\":\"message\"" + members + ",\"message\":" + APIJSON::encoder.encode(message) + "}");
    }

    QStringList sent;

private:
    int m_markers = 0;
};

TEST_F(LiveUpdatesTest, AVisitorsMessageMovesItsConversationUpAndCountsAsUnread)
{
    Session& made = start();
    EXPECT_EQ(listedIds(made).front(), u"c2"_s);
    receiveMessage(makeMessage(u"m1"_s, u"c1"_s, MessageSender::visitor, u"Still there?"_s));
    EXPECT_EQ(listedIds(made).front(), u"c1"_s);
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) {
        return c.lastMessagePreview == u"Still there?"_s && c.agentUnread == 1;
    }));
    receiveMessage(makeMessage(u"m1"_s, u"c1"_s));
    EXPECT_EQ(made.messages().thread(u"c1"_s).size(), 1U);
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) { return c.agentUnread == 2; }))
        << "a repeated event still counts";
    EXPECT_TRUE(sent.isEmpty());
}

TEST_F(LiveUpdatesTest, AVisitorsMessageInTheOpenConversationIsRead)
{
    Session& made = start();
    made.setSelectedConversationId(u"c1"_s);
    sent.clear();
    receiveMessage(makeMessage(u"m1"_s, u"c1"_s));
    Message reply = makeMessage(u"m2"_s, u"c1"_s, MessageSender::agent);
    receiveMessage(reply);
    EXPECT_THAT(sent, ElementsAre(uR"({"type":"read","conversationId":"c1"})"_s));
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) { return !c.agentUnread; }));
}

TEST_F(LiveUpdatesTest, TheEventsConversationComesBeforeTheMessages)
{
    Session& made = start();
    receiveMessage(makeMessage(u"m1"_s, u"c2"_s), R"(,"conversationId":"c1")");
    EXPECT_EQ(made.messages().thread(u"c1"_s).size(), 1U);
    receiveMessage(makeMessage(u"m2"_s, u"unknown"_s));
    EXPECT_EQ(made.messages().thread(u"unknown"_s).size(), 1U);
    EXPECT_EQ(made.conversations().find(u"unknown"_s), nullptr) << "an event creates no inbox entry";
}

TEST_F(LiveUpdatesTest, ThreadsUsedLongestAgoAreForgottenAndTheOneOnShowStays)
{
    Session& made = start();
    made.setSelectedConversationId(u"c1"_s);
    Notifications resets(made, &Session::threadReset);
    for (const char* id : {"c1", "long ago", "lately"})
        receiveMessage(makeMessage(QString::fromLatin1(id), QString::fromLatin1(id)));
    SocketEvent event;
    event.type = u"message"_s;
    const auto fill = [&](qsizetype messages, const QString& conversationId) {
        for (; messages > 0; --messages) {
            event.message = makeMessage(u"%1 %2"_s.arg(conversationId).arg(messages), conversationId);
            made.handle(event);
        }
    };
    fill(Session::keptMessages - 3, u"busy"_s);
    EXPECT_EQ(made.messages().messageCount(), Session::keptMessages);
    EXPECT_EQ(resets.count, 0);
    receiveMessage(makeMessage(u"m2"_s, u"lately"_s));
    EXPECT_EQ(resets.last, u"long ago"_s);
    EXPECT_TRUE(made.messages().thread(u"long ago"_s).empty());
    EXPECT_EQ(made.messages().thread(u"lately"_s).size(), 2U);
    fill(1, u"long ago"_s);
    EXPECT_EQ(made.messages().messageCount(), 4) << "whole threads go";
    EXPECT_THAT(made.messages().conversationIds(), UnorderedElementsAre(u"c1"_s, u"lately"_s, u"long ago"_s));
    fill(Session::keptMessages + 5, u"endless"_s);
    EXPECT_EQ(made.messages().thread(u"endless"_s).size(), std::size_t(Session::keptMessages) + 5)
        << "what is being written to is not cut";
    EXPECT_THAT(made.messages().conversationIds(), UnorderedElementsAre(u"c1"_s, u"endless"_s));
    EXPECT_EQ(resets.count, 4);
}

TEST_F(LiveUpdatesTest, APreviewNamesTheAttachmentOfAMessageWithoutText)
{
    Session& made = start();
    Message message = makeMessage(u"m1"_s, u"c1"_s, MessageSender::visitor, {});
    message.attachment = Attachment{};
    message.attachment->name = u"lid.png"_s;
    message.createdAt.reset();
    receiveMessage(message);
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) {
        return c.lastMessagePreview == u"lid.png"_s && c.lastMessageAt > minutesAgo(1);
    }));
    message.id = u"m2"_s;
    message.attachment.reset();
    receiveMessage(message);
    EXPECT_TRUE(
        holds(made, u"c1"_s, [](const Conversation& c) { return c.lastMessagePreview == QString(u""_s); }));
}

TEST_F(LiveUpdatesTest, TypingMarksComeAndGo)
{
    Session& made = start();
    receive(R"({"type":"typing","conversationId":"c1","from":"visitor","preview":"Hel"})");
    EXPECT_TRUE(made.typingConversations().contains(u"c1"_s));
    EXPECT_EQ(made.typingPreviews().value(u"c1"_s), u"Hel"_s);
    receive(R"({"type":"typing","conversationId":"c1","from":"visitor"})");
    EXPECT_EQ(made.typingPreviews().value(u"c1"_s), u"Hel"_s) << "an absent preview leaves the text";
    receive(R"({"type":"typing","conversationId":"c1","from":"visitor","preview":""})");
    EXPECT_FALSE(made.typingPreviews().contains(u"c1"_s));
    EXPECT_TRUE(made.typingConversations().contains(u"c1"_s));
    EXPECT_TRUE(waitUntil([&] { return made.typingConversations().isEmpty(); }));

    receive(R"({"type":"typing","conversationId":"c1","from":"visitor","preview":"Hi"})");
    EXPECT_TRUE(waitUntil([&] { return made.typingPreviews().isEmpty(); })) << "a preview without news goes";

    receive(R"({"type":"typing","conversationId":"c1","from":"visitor","preview":"Hi"})");
    receiveMessage(makeMessage(u"m1"_s, u"c1"_s));
    EXPECT_TRUE(made.typingConversations().isEmpty() && made.typingPreviews().isEmpty());
    receive(R"({"type":"typing","conversationId":"c1","from":"robot","preview":"Hi"})");
    EXPECT_TRUE(made.typingConversations().isEmpty() && made.typingPreviews().isEmpty());
}

TEST_F(LiveUpdatesTest, ARestartedMarkIsNotClearedByTheOlderTimer)
{
    timings.typingClear = 300ms;
    Session& made = start();
    const QByteArray frame = R"({"type":"typing","conversationId":"c1","from":"visitor"})";
    Notifications changes(made, &Session::typingConversationChanged);
    receive(frame);
    for (int i = 0; i < 4; ++i) {
        spinFor(100ms);
        receive(frame);
        EXPECT_EQ(changes.count, 1) << "the mark must neither vanish nor be announced again";
    }
    EXPECT_TRUE(waitUntil([&] { return made.typingConversations().isEmpty(); }));
    EXPECT_EQ(changes.count, 2);
}

TEST_F(LiveUpdatesTest, KeepsTheLatestTeammatesDraft)
{
    Session& made = start();
    receive(
        R"({"type":"typing","conversationId":"c1","from":"agent","agentId":"a1","agentName":"Me","preview":"x"})");
    receive(R"({"type":"typing","conversationId":"c1","from":"agent","preview":"x"})");
    EXPECT_TRUE(made.agentPreviews().isEmpty()) << "one's own typing and a nameless one are nothing";
    receive(
        R"({"type":"typing","conversationId":"c1","from":"agent","agentId":"a2","agentName":"Dana","preview":"The"})");
    receive(R"({"type":"typing","conversationId":"c1","from":"agent","agentId":"a3","preview":"No"})");
    EXPECT_EQ(made.agentPreviews().value(u"c1"_s), (AgentDraft{u"a3"_s, {}, u"No"_s}));
    receive(R"({"type":"typing","conversationId":"c1","from":"agent","agentId":"a2","preview":""})");
    EXPECT_TRUE(made.agentPreviews().contains(u"c1"_s)) << "another teammate's stop is not this one's";
    Message note = makeMessage(u"m1"_s, u"c1"_s, MessageSender::note);
    note.agentId = u"a3"_s;
    receiveMessage(note);
    EXPECT_TRUE(made.agentPreviews().isEmpty()) << "the draft has become a message";
    receive(R"({"type":"typing","conversationId":"c1","from":"agent","agentId":"a2","preview":"Old"})");
    EXPECT_TRUE(waitUntil([&] { return made.agentPreviews().isEmpty(); }));
}

TEST_F(LiveUpdatesTest, ViewersLeaveOutOneselfAndRepeats)
{
    Session& made = start();
    receive(
        R"({"type":"viewers","conversationId":"c1","agents":[{"id":"a2","name":"Dana"},{"id":"a1","name":"Me"},)"
        R"({"id":"a2","name":"Again"},{"id":"a3","name":""}]})");
    EXPECT_THAT(made.viewers().value(u"c1"_s),
                ElementsAre(ViewerAgent{u"a2"_s, u"Dana"_s}, ViewerAgent{u"a3"_s, u""_s}));
    receive(R"({"type":"viewers","conversationId":"c1","agents":[{"id":"a1","name":"Me"}]})");
    EXPECT_FALSE(made.viewers().contains(u"c1"_s));
    receive(R"({"type":"viewers","conversationId":"c1","agents":[{"id":"a2","name":"Dana"}]})");
    receive(R"({"type":"viewers","conversationId":"c1"})");
    EXPECT_FALSE(made.viewers().contains(u"c1"_s));
}

TEST_F(LiveUpdatesTest, ReadMarksGoToTheirSide)
{
    Session& made = start();
    receive(R"({"type":"read","conversationId":"c1","by":"visitor","at":"2026-01-02T03:04:05Z"})");
    receive(R"({"type":"read","conversationId":"c1","by":"agent","at":"2026-01-02T03:04:06Z"})");
    receive(R"({"type":"read","conversationId":"c2","by":"robot"})");
    receive(R"({"type":"read","conversationId":"c2"})");
    receive(R"({"type":"read","conversationId":"c9","by":"visitor"})");
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) {
        return c.visitorLastReadAt == instantFromISO8601("2026-01-02T03:04:05Z")
               && c.agentLastReadAt == instantFromISO8601("2026-01-02T03:04:06Z");
    }));
    EXPECT_TRUE(holds(made, u"c2"_s, [](const Conversation& c) {
        return !c.visitorLastReadAt && c.agentLastReadAt && *c.agentLastReadAt > minutesAgo(1);
    }));
}

TEST_F(LiveUpdatesTest, AConversationEventKeepsTheOpenOneRead)
{
    Session& made = start();
    made.setSelectedConversationId(u"c1"_s);
    for (const char* id : {"c1", "c2", "c3"}) {
        Conversation conversation = makeConversation(QString::fromLatin1(id), 0);
        conversation.agentUnread = 5;
        receive("{\"type\":\"conversation\",\"conversation\":" + APIJSON::encoder.encode(conversation) + "}");
    }
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) { return c.agentUnread == 0; }));
    EXPECT_TRUE(holds(made, u"c2"_s, [](const Conversation& c) { return c.agentUnread == 5; }));
    EXPECT_TRUE(holds(made, u"c3"_s, [](const Conversation& c) { return c.agentUnread == 5; }));
}

TEST_F(LiveUpdatesTest, ThrottlesTypingPerConversationAndStopsOnce)
{
    Session& made = start();
    const Instant start = clock;
    const auto typeAt = [&](std::chrono::milliseconds at, const QString& text) {
        clock = start + at;
        made.sendTyping(u"c1"_s, text);
    };
    typeAt(0ms, {});
    EXPECT_TRUE(sent.isEmpty()) << "nothing to stop yet";
    typeAt(0ms, u"a"_s);
    typeAt(500ms, u"ab"_s);
    made.sendTyping(u"c2"_s, u" "_s);
    typeAt(1200ms, u"abc"_s);
    typeAt(1500ms, {});
    typeAt(1500ms, {});
    typeAt(1600ms, u"d"_s);
    EXPECT_THAT(sent, ElementsAre(uR"({"type":"typing","conversationId":"c1","preview":"a"})"_s,
                                  uR"({"type":"typing","conversationId":"c2","preview":" "})"_s,
                                  uR"({"type":"typing","conversationId":"c1","preview":"abc"})"_s,
                                  uR"({"type":"typing","conversationId":"c1","preview":""})"_s,
                                  uR"({"type":"typing","conversationId":"c1","preview":"d"})"_s));
}

} // namespace orvia::test
