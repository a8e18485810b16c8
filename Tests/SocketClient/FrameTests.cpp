#include "ChannelFixture.h"

namespace orvia::test {
namespace {

using Frames = ChannelFixture;
using testing::ElementsAre;

// Outgoing frames are seen by the observer without a connection, so their bytes need none.

TEST_F(Frames, AreCompactObjectsWithTheirMembersInOrder)
{
    client->sendTyping(u"c1"_s, QString());
    client->sendTyping(u"c\"1"_s, u"größer/\n"_s);
    client->sendRead(u"c1"_s);
    client->sendViewing(u"c1"_s);
    client->sendViewing(std::nullopt);
    EXPECT_THAT(sent, ElementsAre(uR"({"type":"typing","conversationId":"c1","preview":""})"_s,
                                  uR"({"type":"typing","conversationId":"c\"1","preview":"größer/\n"})"_s,
                                  uR"({"type":"read","conversationId":"c1"})"_s,
                                  uR"({"type":"viewing","conversationId":"c1"})"_s,
                                  uR"({"type":"viewing","conversationId":null})"_s));
}

TEST_F(Frames, CutThePreviewToFiveHundredUserPerceivedCharacters)
{
    const QString family = u"\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466"_s;
    const auto expectPreview = [this](const QString& text, QString preview) {
        sent.clear();
        client->sendTyping(u"c1"_s, text);
        preview.replace(u"\r\n"_s, u"\\r\\n"_s);
        EXPECT_THAT(sent, ElementsAre(uR"({"type":"typing","conversationId":"c1","preview":")"_s + preview
                                      + u"\"}"_s));
    };
    // A letter, joined emoji, a flag, an accent, a syllable of three letters, a line break of two units.
    for (const QString& character :
         {u"x"_s, family, u"\U0001F1E9\U0001F1EA"_s, u"e\u0301"_s, u"\u1112\u1161\u11AB"_s, u"\r\n"_s})
        expectPreview(character.repeated(501), character.repeated(500));
    expectPreview(QString(500, u'x'), QString(500, u'x'));
    expectPreview(family.repeated(200), family.repeated(200));
    expectPreview(QString(499, u'x') + family + u'y', QString(499, u'x') + family);
}

TEST_F(Frames, SentWhileTheHandshakeRunsFollowItAndOthersAreNotKept)
{
    client->sendRead(u"c1"_s);
    connectAndWait();
    client->disconnect();
    client->sendRead(u"c2"_s);
    connectClient();
    client->sendRead(u"c3"_s);
    client->sendRead(u"c4"_s);
    ASSERT_TRUE(waitForChannels(2));
    ASSERT_TRUE(waitUntil([this] { return service.channel()->texts().size() >= 2; }));
    EXPECT_EQ(service.channel()->texts(), sent.mid(2));
    EXPECT_EQ(sent.size(), 4) << "the observer sees every frame";
}

TEST_F(Frames, OfBothKindsAreDecodedAndReportedOneByOne)
{
    connectAndWait();
    changes.clear();
    service.channel()->sendText(
        uR"({"type":"typing","conversationId":"c1","from":"visitor","preview":"é"})"_s);
    service.channel()->sendBinary("{\"type\":\"read\",\"conversationId\":\"c2\",\"by\":\"visitor\"}");
    service.channel()->sendText(u"not an event"_s);
    service.channel()->sendText(uR"({"type":"of tomorrow","more":[1,{}]})"_s);
    ASSERT_TRUE(waitForEvents(3));
    EXPECT_EQ(events.at(0).preview, u"é"_s);
    EXPECT_EQ(events.at(1).by, u"visitor"_s);
    EXPECT_EQ(events.at(2).type, u"of tomorrow"_s);
    EXPECT_THAT(changes, ElementsAre(true, true, true, true)) << "every frame is a sign of life";
}

} // namespace
} // namespace orvia::test
