#include "ChannelFixture.h"

namespace orvia::test {
namespace {

using Frames = ChannelFixture;
using testing::ElementsAre;

/// Outgoing frames are seen by the observer without a connection, so their bytes need none.
struct PreviewCase {
    const char* name;
    QString text;
    QString preview;
};

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
    const QString flag = u"\U0001F1E9\U0001F1EA"_s;
    const QString skinTone = u"\U0001F44B\U0001F3FD"_s;
    const QString accent = u"e\u0301"_s;
    const QString syllable = u"\u1112\u1161\u11AB"_s;
    const PreviewCase cases[] = {
        {"exactly the limit", QString(500, u'x'), QString(500, u'x')},
        {"600 letters", QString(600, u'x'), QString(500, u'x')},
        {"surrogate pairs", u"\U0001F600"_s.repeated(600), u"\U0001F600"_s.repeated(500)},
        {"families joined from four emoji", family.repeated(600), family.repeated(500)},
        {"a long text of few characters", family.repeated(200), family.repeated(200)},
        {"flags", flag.repeated(501), flag.repeated(500)},
        {"skin tones", skinTone.repeated(501), skinTone.repeated(500)},
        {"combining accents", accent.repeated(501), accent.repeated(500)},
        {"conjoining syllables", syllable.repeated(501), syllable.repeated(500)},
        {"a line break of two units", u"\r\n"_s.repeated(501), u"\r\n"_s.repeated(500)},
        {"a character across the limit", QString(499, u'x') + family + u"y"_s, QString(499, u'x') + family},
    };
    for (const PreviewCase& tested : cases) {
        SCOPED_TRACE(tested.name);
        sent.clear();
        client->sendTyping(u"c1"_s, tested.text);
        QString escaped = tested.preview;
        escaped.replace(u"\r\n"_s, u"\\r\\n"_s);
        EXPECT_THAT(sent, ElementsAre(u"{\"type\":\"typing\",\"conversationId\":\"c1\",\"preview\":\""_s
                                      + escaped + u"\"}"_s));
    }
}

TEST_F(Frames, SentWhileTheHandshakeRunsFollowIt)
{
    connectClient();
    client->sendRead(u"c1"_s);
    client->sendRead(u"c2"_s);
    ASSERT_TRUE(waitForChannels(1));
    ASSERT_TRUE(waitUntil([this] { return service.channel()->texts().size() >= 2; }));
    EXPECT_EQ(service.channel()->texts(), sent);
}

TEST_F(Frames, SentWithoutAConnectionAreNotKeptForLater)
{
    client->sendRead(u"c1"_s);
    connectAndWait();
    client->disconnect();
    client->sendRead(u"c2"_s);
    connectClient();
    client->sendRead(u"c3"_s);
    ASSERT_TRUE(waitForChannels(2));
    ASSERT_TRUE(waitUntil([this] { return !service.channel()->texts().isEmpty(); }));
    EXPECT_THAT(service.channel()->texts(), ElementsAre(sent.at(2)));
    EXPECT_EQ(sent.size(), 3) << "the observer sees every frame";
}

TEST_F(Frames, OfBothKindsAreDecodedAndReportedOneByOne)
{
    connectAndWait();
    changes.clear();
    service.channel()->sendText(
        uR"({"type":"typing","conversationId":"c1","from":"visitor","preview":"é"})"_s);
    service.channel()->sendBinary("{\"type\":\"read\",\"conversationId\":\"c2\",\"by\":\"visitor\"}");
    service.channel()->sendText(uR"({"type":"of tomorrow","more":[1,{}]})"_s);
    ASSERT_TRUE(waitForEvents(3));
    EXPECT_EQ(events.at(0).preview, u"é"_s);
    EXPECT_EQ(events.at(1).by, u"visitor"_s);
    EXPECT_EQ(events.at(2).type, u"of tomorrow"_s);
    EXPECT_THAT(changes, ElementsAre(true, true, true)) << "every frame is a sign of life";
}

TEST_F(Frames, OfSeveralMegabytesAreDelivered)
{
    connectAndWait();
    const QString preview(3 * 1024 * 1024, u'x');
    service.channel()->sendText(u"{\"type\":\"typing\",\"preview\":\"%1\"}"_s.arg(preview));
    ASSERT_TRUE(waitForEvents(1));
    EXPECT_TRUE(events.at(0).preview == preview);
}

} // namespace
} // namespace orvia::test
