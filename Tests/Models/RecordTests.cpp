#include "RecordChecks.h"

#include "Models/Agent.h"
#include "Models/Conversation.h"
#include "Models/Message.h"
#include "Models/Product.h"
#include "Models/SocketEvent.h"
#include "Models/Visitor.h"

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

const std::vector<std::string> notText{"1", "true", "[]", "{}"};
const std::vector<std::string> notInteger{R"("1")", "1.5", "true", "[]", "{}", "9223372036854775808"};
const std::vector<std::string> notFlag{"1", R"("true")", "[]"};
const std::vector<std::string> notDate{"1714566645", R"("2024-05-01")", R"("")", "{}"};
const std::vector<std::string> notTexts{R"("a")", "[1]", R"(["a",null])", "{}"};

std::vector<std::string> notCase(std::string example)
{
    return {"\"" + example + "s\"",
            "\"" + std::string(1, static_cast<char>(std::toupper(example[0]))) + example.substr(1) + "\"",
            R"("")", "0", "[]"};
}

const std::string date1 = R"("2024-05-01T12:30:45Z")";
const std::string date2 = R"("2024-05-02T12:30:45Z")";
const std::string date3 = R"("2024-05-03T12:30:45Z")";
const std::string date4 = R"("2024-05-04T12:30:45Z")";
const std::string date5 = R"("2024-05-05T12:30:45Z")";
const std::string date6 = R"("2024-05-06T12:30:45Z")";

Instant day(int number)
{
    return instant("2024-05-0" + std::to_string(number) + "T12:30:45Z");
}

Visitor someVisitor()
{
    return {.name = u"Vera"_s, .email = u"vera@visitor.example"_s, .meta = std::nullopt};
}
const std::string someVisitorText = R"({"name":"Vera","email":"vera@visitor.example"})";

Conversation someConversation()
{
    return {
        .id = u"c1"_s, .productId = u"p1"_s, .visitor = someVisitor(), .status = ConversationStatus::open};
}
const std::string someConversationText =
    R"({"_id":"c1","productId":"p1","visitor":)" + someVisitorText + R"(,"status":"open"})";

Message someMessage()
{
    return {.id = u"m1"_s, .conversationId = u"c1"_s, .sender = MessageSender::note, .body = u"Hello"_s};
}
const std::string someMessageText = R"({"_id":"m1","conversationId":"c1","sender":"note","body":"Hello"})";

} // namespace

// The members of each record stand in the order of its table.

TEST(Records, Agent)
{
    checkRecord(Agent{u"a1"_s, u"Ada"_s, u"ada@team.example"_s, AgentRole::admin,
                      QStringList{u"p1"_s, u"p2"_s}, NotifyMode::mentions, QStringList{}},
                {{"_id", Rule::required, R"("a1")", notText},
                 {"name", Rule::required, R"("Ada")", notText},
                 {"email", Rule::defaulted, R"("ada@team.example")", notText},
                 {"role", Rule::required, R"("admin")", notCase("admin")},
                 {"productIds", Rule::optional, R"(["p1","p2"])", notTexts},
                 {"notifyMode", Rule::lenient, R"("mentions")", notCase("mentions")},
                 {"mutedConversationIds", Rule::optional, "[]", notTexts}});
}

TEST(Records, Product)
{
    checkRecord(Product{u"p1"_s, u"Shop"_s, u"shop"_s, u"pk"_s, WidgetConfig{.title = u"Chat"_s}, day(1)},
                {{"_id", Rule::required, R"("p1")", notText},
                 {"name", Rule::required, R"("Shop")", notText},
                 {"slug", Rule::required, R"("shop")", notText},
                 {"publicKey", Rule::optional, R"("pk")", notText},
                 {"widget", Rule::optional, R"({"title":"Chat"})", {R"("x")", "[]", R"({"title":1})"}},
                 {"createdAt", Rule::optional, date1, notDate}});
}

TEST(Records, WidgetConfig)
{
    checkRecord(WidgetConfig{u"Chat"_s, u"#c2410c"_s, u"left"_s, WidgetGreeting{.enabled = false}},
                {{"title", Rule::optional, R"("Chat")", notText},
                 {"accentColor", Rule::optional, R"("#c2410c")", notText},
                 {"position", Rule::optional, R"("left")", notText},
                 {"greeting", Rule::optional, R"({"enabled":false})", {"1", "[]", R"({"enabled":0})"}}});
    EXPECT_EQ(encoded(WidgetConfig{.title = u"Only"_s}), R"({"title":"Only"})");
    EXPECT_EQ(encoded(WidgetConfig{}), "{}");
}

TEST(Records, WidgetGreeting)
{
    checkRecord(WidgetGreeting{true, 8, u"Hi"_s}, {{"enabled", Rule::optional, "true", notFlag},
                                                   {"delaySeconds", Rule::optional, "8", notInteger},
                                                   {"text", Rule::optional, R"("Hi")", notText}});
}

TEST(Records, CannedResponse)
{
    checkRecord(CannedResponse{u"r1"_s, u"p1"_s, u"hi"_s, u"Good day"_s, day(1)},
                {{"_id", Rule::required, R"("r1")", notText},
                 {"productId", Rule::optional, R"("p1")", notText},
                 {"shortcut", Rule::required, R"("hi")", notText},
                 {"body", Rule::required, R"("Good day")", notText},
                 {"createdAt", Rule::optional, date1, notDate}});
}

TEST(Records, Conversation)
{
    checkRecord(Conversation{u"c1"_s, u"p1"_s, someVisitor(), ConversationStatus::closed, u"a1"_s, day(1),
                             day(2), day(3), u"Hello"_s, 4, 5, day(4), day(5),
                             Rating{.score = 3, .comment = std::nullopt}, day(6)},
                {{"_id", Rule::required, R"("c1")", notText},
                 {"productId", Rule::required, R"("p1")", notText},
                 {"visitor", Rule::required, someVisitorText, {"1", "[]", R"({"name":"Vera"})"}},
                 {"status", Rule::required, R"("closed")", notCase("closed")},
                 {"assigneeId", Rule::optional, R"("a1")", notText},
                 {"assignedAt", Rule::optional, date1, notDate},
                 {"snoozedUntil", Rule::optional, date2, notDate},
                 {"lastMessageAt", Rule::optional, date3, notDate},
                 {"lastMessagePreview", Rule::optional, R"("Hello")", notText},
                 {"visitorUnread", Rule::optional, "4", notInteger},
                 {"agentUnread", Rule::optional, "5", notInteger},
                 {"visitorLastReadAt", Rule::optional, date4, notDate},
                 {"agentLastReadAt", Rule::optional, date5, notDate},
                 {"rating", Rule::optional, R"({"score":3})", {"3", "{}", R"({"score":"3"})"}},
                 {"createdAt", Rule::optional, date6, notDate}});
}

TEST(Records, Rating)
{
    checkRecord(Rating{5, u"Great"_s}, {{"score", Rule::required, "5", notInteger},
                                        {"comment", Rule::optional, R"("Great")", notText}});
}

TEST(Records, Visitor)
{
    checkRecord(Visitor{u"Vera"_s, u""_s, VisitorMeta{.ip = u"::1"_s}},
                {{"name", Rule::required, R"("Vera")", notText},
                 {"email", Rule::required, R"("")", notText},
                 {"meta", Rule::optional, R"({"ip":"::1"})", {R"("x")", "1", "[]", "true"}}});
}

TEST(Records, VisitorMeta)
{
    OrderedStringMap data;
    data.pairs = {{u"plan"_s, u"pro"_s}, {u"a"_s, u""_s}};
    checkRecord(VisitorMeta{u"u"_s, u"r"_s, u"ua"_s, u"192.0.2.1"_s, VisitorGeo{.city = u"Graz"_s}, u"de"_s,
                            u"1920x1080"_s, -120, std::vector{VisitorPage{.url = u"/"_s}, VisitorPage{}},
                            data},
                {{"url", Rule::lenient, R"("u")", notText},
                 {"referrer", Rule::lenient, R"("r")", notText},
                 {"userAgent", Rule::lenient, R"("ua")", notText},
                 {"ip", Rule::lenient, R"("192.0.2.1")", notText},
                 {"geo", Rule::lenient, R"({"city":"Graz"})", {R"("Graz")", "[]", "1"}},
                 {"language", Rule::lenient, R"("de")", notText},
                 {"screen", Rule::lenient, R"("1920x1080")", notText},
                 {"timezoneOffset", Rule::lenient, "-120", notInteger},
                 {"pages", Rule::lenient, R"([{"url":"/"},{}])", {"{}", R"([{"url":"/"},7])", "[null]"}},
                 {"data", Rule::lenient, R"({"plan":"pro","a":""})", {"[]", R"("x")", "1"}}});
}

TEST(Records, VisitorGeo)
{
    checkRecord(VisitorGeo{u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"f"_s},
                {{"city", Rule::lenient, R"("a")", notText},
                 {"region", Rule::lenient, R"("b")", notText},
                 {"country", Rule::lenient, R"("c")", notText},
                 {"countryCode", Rule::lenient, R"("d")", notText},
                 {"timezone", Rule::lenient, R"("e")", notText},
                 {"org", Rule::lenient, R"("f")", notText}});
}

TEST(Records, VisitorPage)
{
    checkRecord(VisitorPage{u"/a"_s, u"A"_s, day(1)}, {{"url", Rule::lenient, R"("/a")", notText},
                                                       {"title", Rule::lenient, R"("A")", notText},
                                                       {"at", Rule::lenient, date1, notDate}});
}

TEST(Records, Message)
{
    checkRecord(Message{u"m1"_s, u"c1"_s, MessageSender::system, u"a1"_s, MessageVia::email,
                        QStringList{u"a2"_s}, u"Hello"_s, Attachment{.fileId = u"f1"_s}, day(1)},
                {{"_id", Rule::required, R"("m1")", notText},
                 {"conversationId", Rule::required, R"("c1")", notText},
                 {"sender", Rule::required, R"("system")", notCase("system")},
                 {"agentId", Rule::optional, R"("a1")", notText},
                 {"via", Rule::optional, R"("email")", notCase("email")},
                 {"mentions", Rule::optional, R"(["a2"])", notTexts},
                 {"body", Rule::required, R"("Hello")", notText},
                 {"attachment", Rule::optional, R"({"fileId":"f1"})", {"1", "[]", R"({"size":"1"})"}},
                 {"createdAt", Rule::optional, date1, notDate}});
}

TEST(Records, Attachment)
{
    checkRecord(
        Attachment{u"f1"_s, u"a.png"_s, u"image/png"_s, 10485760, AttachmentKind::image, u"/files/f1"_s},
        {{"fileId", Rule::optional, R"("f1")", notText},
         {"name", Rule::optional, R"("a.png")", notText},
         {"mime", Rule::optional, R"("image/png")", notText},
         {"size", Rule::optional, "10485760", notInteger},
         {"kind", Rule::optional, R"("image")", notCase("image")},
         {"url", Rule::optional, R"("/files/f1")", notText}});
}

TEST(Records, SearchResult)
{
    const SearchResult first{someConversation(), u"found"_s, u"m1"_s};
    checkRecord(first, {{"conversation", Rule::required, someConversationText, {"1", "{}"}},
                        {"snippet", Rule::required, R"("found")", notText},
                        {"messageId", Rule::optional, R"("m1")", notText}});
    const SearchResult second{someConversation(), u"found"_s, u"m2"_s};
    EXPECT_NE(first, second);
    EXPECT_EQ(first.id(), second.id());
}

TEST(Records, ViewerAgent)
{
    checkRecord(ViewerAgent{u"a1"_s, u"Ada"_s},
                {{"id", Rule::required, R"("a1")", notText}, {"name", Rule::required, R"("Ada")", notText}});
    EXPECT_FALSE(decoded<ViewerAgent>(R"({"_id":"a1","name":"Ada"})"));
}

TEST(Records, SocketEvent)
{
    checkRecord(SocketEvent{u"message"_s, u"c1"_s, someMessage(), someConversation(), u"visitor"_s, u"Hel"_s,
                            u"agent"_s, day(1), u"a1"_s, u"Ada"_s,
                            std::vector{ViewerAgent{.id = u"a2"_s, .name = u"Bo"_s}}},
                {{"type", Rule::required, R"("message")", notText},
                 {"conversationId", Rule::optional, R"("c1")", notText},
                 {"message", Rule::optional, someMessageText, {"1", "{}"}},
                 {"conversation", Rule::optional, someConversationText, {"1", "{}"}},
                 {"from", Rule::optional, R"("visitor")", notText},
                 {"preview", Rule::optional, R"("Hel")", notText},
                 {"by", Rule::optional, R"("agent")", notText},
                 {"at", Rule::optional, date1, notDate},
                 {"agentId", Rule::optional, R"("a1")", notText},
                 {"agentName", Rule::optional, R"("Ada")", notText},
                 {"agents", Rule::optional, R"([{"id":"a2","name":"Bo"}])", {"{}", "[1]", "[{}]"}}});
}

TEST(Records, MembersMayComeInAnyOrderAndTheLastOfARepeatedKeyCounts)
{
    const Rating rating{.score = 2, .comment = u"b"_s};
    EXPECT_EQ(decoded<Rating>(R"({"comment":"b","score":2})"), rating);
    EXPECT_EQ(decoded<Rating>(R"({"score":1,"comment":"a","score":2,"comment":"b"})"), rating);
    EXPECT_EQ(decoded<Rating>(R"({ "\u0073core" : 2 , "comment" : "b" })"), rating);
}

TEST(Records, FailuresNameTheirKind)
{
    using Kind = DecodingError::Kind;
    EXPECT_EQ(failureOf<Rating>("{}")->kind(), Kind::missingMember);
    EXPECT_EQ(failureOf<Rating>("{}")->description(), u"Missing member: score"_s);
    EXPECT_EQ(failureOf<Rating>(R"({"score":"5"})")->kind(), Kind::typeMismatch);
    EXPECT_EQ(failureOf<Rating>(R"({"score":5)")->kind(), Kind::syntax);
    EXPECT_EQ(failureOf<Attachment>(R"({"kind":"film"})")->kind(), Kind::corruptedData);
}

TEST(Records, IntegersCoverSixtyFourBitsAndMayBeWrittenWithPointOrExponent)
{
    const std::vector<std::pair<std::string, std::optional<qint64>>> cases{
        {"0", 0},
        {"-0", 0},
        {"9223372036854775807", std::numeric_limits<qint64>::max()},
        {"-9223372036854775808", std::numeric_limits<qint64>::min()},
        {"-9223372036854775809", std::nullopt},
        {"18446744073709551615", std::nullopt},
        {"123456789012345678901234567890", std::nullopt},
        {"5.0", 5},
        {"-5e0", -5},
        {"1.5e1", 15},
        {"1e30", std::nullopt},
        {"1e999", std::nullopt},
        {"5.5", std::nullopt},
    };
    for (const auto& [text, score] : cases) {
        const auto rating = decoded<Rating>(R"({"score":)" + text + "}");
        EXPECT_EQ(rating ? std::optional(rating->score) : std::nullopt, score) << text;
    }
}

} // namespace orvia
