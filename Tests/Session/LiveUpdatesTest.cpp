#include "SessionFixture.h"

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

class LiveUpdatesTest : public SessionFixture {
protected:
    /// A session on its live channel with c1 and, later in time, c2 in its inbox.
    Session& start()
    {
        scriptInbox({makeConversation(u"c1"_s, 30), makeConversation(u"c2"_s, 20)});
        Session& made = connectLive();
        made.socket().onSend = [this](const QString& text) { sent.append(text); };
        return made;
    }

    void receive(const QByteArray& frame) { session->handle(APIJSON::decoder.decode<SocketEvent>(frame)); }
    /// What an agent types; @p more holds the members that say who and what.
    void receiveTyping(const QByteArray& more)
    {
        receive(R"({"type":"typing","conversationId":"c1","from":"agent",)" + more + "}");
    }

    QStringList sent;
};

TEST_F(LiveUpdatesTest, AVisitorsMessageMovesItsConversationUpAndCountsAsUnread)
{
    Session& made = start();
    EXPECT_EQ(listedIds(made).front(), u"c2"_s);
    deliver(makeMessage(u"m1"_s, u"c1"_s, MessageSender::visitor, u"Still there?"_s));
    EXPECT_EQ(listedIds(made).front(), u"c1"_s);
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) {
        return c.lastMessagePreview == u"Still there?"_s && c.agentUnread == 1;
    }));
    deliver(makeMessage(u"m1"_s, u"c1"_s));
    EXPECT_EQ(made.messages().thread(u"c1"_s).size(), 1U);
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) { return c.agentUnread == 2; }))
        << "a repeated event still counts";
    EXPECT_TRUE(sent.isEmpty());

    receive(R"({"type":"message","conversationId":"unknown","message":)"
            + APIJSON::encoder.encode(makeMessage(u"m2"_s, u"c1"_s)) + "}");
    EXPECT_EQ(made.messages().thread(u"unknown"_s).size(), 1U) << "the event's word comes first";
    EXPECT_EQ(made.conversations().find(u"unknown"_s), nullptr) << "an event creates no inbox entry";
}

TEST_F(LiveUpdatesTest, TheOpenConversationStaysRead)
{
    Session& made = start();
    made.setSelectedConversationId(u"c1"_s);
    sent.clear();
    deliver(makeMessage(u"m1"_s, u"c1"_s));
    deliver(makeMessage(u"m2"_s, u"c1"_s, MessageSender::agent));
    EXPECT_THAT(sent, ElementsAre(uR"({"type":"read","conversationId":"c1"})"_s));
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) { return !c.agentUnread; }));
    for (const QString& id : {u"c1"_s, u"c2"_s}) {
        Conversation conversation = makeConversation(id, 0);
        conversation.agentUnread = 5;
        deliver(conversation);
    }
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) { return c.agentUnread == 0; }));
    EXPECT_TRUE(holds(made, u"c2"_s, [](const Conversation& c) { return c.agentUnread == 5; }));
}

TEST_F(LiveUpdatesTest, ThreadsUsedLongestAgoAreForgottenAndTheOneOnShowStays)
{
    Session& made = start();
    made.setSelectedConversationId(u"c1"_s);
    Notifications resets(made, &Session::threadReset);
    int number = 0;
    const auto fill = [&](qsizetype messages, const QString& id) {
        for (; messages > 0; --messages)
            deliver(makeMessage(QString::number(++number), id));
    };
    for (const QString& id : {u"c1"_s, u"long ago"_s, u"lately"_s})
        fill(1, id);
    fill(Session::keptMessages - 3, u"busy"_s);
    EXPECT_EQ(made.messages().messageCount(), Session::keptMessages);
    EXPECT_EQ(resets.count, 0);
    fill(1, u"lately"_s);
    EXPECT_EQ(resets.last, u"long ago"_s);
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
    deliver(message);
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) {
        return c.lastMessagePreview == u"lid.png"_s && c.lastMessageAt > minutesAgo(1);
    }));
}

TEST_F(LiveUpdatesTest, TypingMarksComeAndGo)
{
    Session& made = start();
    deliverTyping(u"c1"_s, u"Hel"_s);
    EXPECT_TRUE(made.typingConversations().contains(u"c1"_s));
    receive(R"({"type":"typing","conversationId":"c1","from":"visitor"})");
    EXPECT_EQ(made.typingPreviews().value(u"c1"_s), u"Hel"_s) << "an absent preview leaves the text";
    deliverTyping(u"c1"_s, u""_s);
    EXPECT_FALSE(made.typingPreviews().contains(u"c1"_s));
    EXPECT_TRUE(made.typingConversations().contains(u"c1"_s));
    EXPECT_TRUE(waitUntil([&] { return made.typingConversations().isEmpty(); }));

    deliverTyping(u"c1"_s, u"Hi"_s);
    EXPECT_TRUE(waitUntil([&] { return made.typingPreviews().isEmpty(); })) << "a preview without news goes";

    deliverTyping(u"c1"_s, u"Hi"_s);
    deliver(makeMessage(u"m1"_s, u"c1"_s));
    receive(R"({"type":"typing","conversationId":"c1","from":"robot","preview":"Hi"})");
    EXPECT_TRUE(made.typingConversations().isEmpty() && made.typingPreviews().isEmpty());
}

TEST_F(LiveUpdatesTest, KeepsTheLatestTeammatesDraft)
{
    Session& made = start();
    receiveTyping(R"("agentId":"a1","agentName":"Me","preview":"x")");
    receiveTyping(R"("preview":"x")");
    EXPECT_TRUE(made.agentPreviews().isEmpty()) << "one's own typing and a nameless one are nothing";
    receiveTyping(R"("agentId":"a2","agentName":"Dana","preview":"The")");
    receiveTyping(R"("agentId":"a3","preview":"No")");
    EXPECT_EQ(made.agentPreviews().value(u"c1"_s), (AgentDraft{u"a3"_s, {}, u"No"_s}));
    receiveTyping(R"("agentId":"a2","preview":"")");
    EXPECT_TRUE(made.agentPreviews().contains(u"c1"_s)) << "another teammate's stop is not this one's";
    Message note = makeMessage(u"m1"_s, u"c1"_s, MessageSender::note);
    note.agentId = u"a3"_s;
    deliver(note);
    EXPECT_TRUE(made.agentPreviews().isEmpty()) << "the draft has become a message";
    receiveTyping(R"("agentId":"a2","preview":"Old")");
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
    deliverViewers(u"c1"_s, {u"Dana"_s});
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
    EXPECT_TRUE(holds(made, u"c1"_s, [](const Conversation& c) {
        return c.visitorLastReadAt == instantFromISO8601("2026-01-02T03:04:05Z")
               && c.agentLastReadAt == instantFromISO8601("2026-01-02T03:04:06Z");
    }));
    EXPECT_TRUE(holds(made, u"c2"_s, [](const Conversation& c) {
        return !c.visitorLastReadAt && c.agentLastReadAt && *c.agentLastReadAt > minutesAgo(1);
    }));
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
    // A clock that is set back silences no longer than the draft.
    typeAt(-1h, u"de"_s);
    typeAt(-1h, {});
    typeAt(-1h, u"f"_s);
    EXPECT_THAT(sent, ElementsAre(uR"({"type":"typing","conversationId":"c1","preview":"a"})"_s,
                                  uR"({"type":"typing","conversationId":"c2","preview":" "})"_s,
                                  uR"({"type":"typing","conversationId":"c1","preview":"abc"})"_s,
                                  uR"({"type":"typing","conversationId":"c1","preview":""})"_s,
                                  uR"({"type":"typing","conversationId":"c1","preview":"d"})"_s,
                                  uR"({"type":"typing","conversationId":"c1","preview":""})"_s,
                                  uR"({"type":"typing","conversationId":"c1","preview":"f"})"_s));
}

} // namespace orvia::test
