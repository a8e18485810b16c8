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

TEST(Records, Agent)
{
    checkRecord(Agent{.id = u"a1"_s,
                      .name = u"Ada"_s,
                      .email = u"ada@team.example"_s,
                      .role = AgentRole::admin,
                      .productIds = QStringList{u"p1"_s, u"p2"_s},
                      .notifyMode = NotifyMode::mentions,
                      .mutedConversationIds = QStringList{}},
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
    checkRecord(Product{.id = u"p1"_s,
                        .name = u"Shop"_s,
                        .slug = u"shop"_s,
                        .publicKey = u"pk"_s,
                        .widget = WidgetConfig{.title = u"Chat"_s},
                        .createdAt = day(1)},
                {{"_id", Rule::required, R"("p1")", notText},
                 {"name", Rule::required, R"("Shop")", notText},
                 {"slug", Rule::required, R"("shop")", notText},
                 {"publicKey", Rule::optional, R"("pk")", notText},
                 {"widget", Rule::optional, R"({"title":"Chat"})", {R"("x")", "[]", R"({"title":1})"}},
                 {"createdAt", Rule::optional, date1, notDate}});
}

TEST(Records, WidgetConfig)
{
    checkRecord(WidgetConfig{.title = u"Chat"_s,
                             .accentColor = u"#c2410c"_s,
                             .position = u"left"_s,
                             .greeting = WidgetGreeting{.enabled = false}},
                {{"title", Rule::optional, R"("Chat")", notText},
                 {"accentColor", Rule::optional, R"("#c2410c")", notText},
                 {"position", Rule::optional, R"("left")", notText},
                 {"greeting", Rule::optional, R"({"enabled":false})", {"1", "[]", R"({"enabled":0})"}}});
    EXPECT_EQ(encoded(WidgetConfig{.title = u"Only"_s}), R"({"title":"Only"})");
    EXPECT_EQ(encoded(WidgetConfig{}), "{}");
}

TEST(Records, WidgetGreeting)
{
    checkRecord(WidgetGreeting{.enabled = true, .delaySeconds = 8, .text = u"Hi"_s},
                {{"enabled", Rule::optional, "true", notFlag},
                 {"delaySeconds", Rule::optional, "8", notInteger},
                 {"text", Rule::optional, R"("Hi")", notText}});
}

TEST(Records, CannedResponse)
{
    checkRecord(CannedResponse{.id = u"r1"_s,
                               .productId = u"p1"_s,
                               .shortcut = u"hi"_s,
                               .body = u"Good day"_s,
                               .createdAt = day(1)},
                {{"_id", Rule::required, R"("r1")", notText},
                 {"productId", Rule::optional, R"("p1")", notText},
                 {"shortcut", Rule::required, R"("hi")", notText},
                 {"body", Rule::required, R"("Good day")", notText},
                 {"createdAt", Rule::optional, date1, notDate}});
}

TEST(Records, Conversation)
{
    checkRecord(Conversation{.id = u"c1"_s,
                             .productId = u"p1"_s,
                             .visitor = someVisitor(),
                             .status = ConversationStatus::closed,
                             .assigneeId = u"a1"_s,
                             .assignedAt = day(1),
                             .snoozedUntil = day(2),
                             .lastMessageAt = day(3),
                             .lastMessagePreview = u"Hello"_s,
                             .visitorUnread = 4,
                             .agentUnread = 5,
                             .visitorLastReadAt = day(4),
                             .agentLastReadAt = day(5),
                             .rating = Rating{.score = 3, .comment = std::nullopt},
                             .createdAt = day(6)},
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
    checkRecord(
        Rating{.score = 5, .comment = u"Great"_s},
        {{"score", Rule::required, "5", notInteger}, {"comment", Rule::optional, R"("Great")", notText}});
}

TEST(Records, Visitor)
{
    checkRecord(Visitor{.name = u"Vera"_s, .email = u""_s, .meta = VisitorMeta{.ip = u"::1"_s}},
                {{"name", Rule::required, R"("Vera")", notText},
                 {"email", Rule::required, R"("")", notText},
                 {"meta", Rule::optional, R"({"ip":"::1"})", {R"("x")", "1", "[]", "true"}}});
}

TEST(Records, VisitorMeta)
{
    OrderedStringMap data;
    data.pairs = {{u"plan"_s, u"pro"_s}, {u"a"_s, u""_s}};
    checkRecord(VisitorMeta{.url = u"u"_s,
                            .referrer = u"r"_s,
                            .userAgent = u"ua"_s,
                            .ip = u"192.0.2.1"_s,
                            .geo = VisitorGeo{.city = u"Graz"_s},
                            .language = u"de"_s,
                            .screen = u"1920x1080"_s,
                            .timezoneOffset = -120,
                            .pages = std::vector{VisitorPage{.url = u"/"_s}, VisitorPage{}},
                            .data = data},
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
    checkRecord(VisitorGeo{.city = u"a"_s,
                           .region = u"b"_s,
                           .country = u"c"_s,
                           .countryCode = u"d"_s,
                           .timezone = u"e"_s,
                           .org = u"f"_s},
                {{"city", Rule::lenient, R"("a")", notText},
                 {"region", Rule::lenient, R"("b")", notText},
                 {"country", Rule::lenient, R"("c")", notText},
                 {"countryCode", Rule::lenient, R"("d")", notText},
                 {"timezone", Rule::lenient, R"("e")", notText},
                 {"org", Rule::lenient, R"("f")", notText}});
}

TEST(Records, VisitorPage)
{
    checkRecord(VisitorPage{.url = u"/a"_s, .title = u"A"_s, .at = day(1)},
                {{"url", Rule::lenient, R"("/a")", notText},
                 {"title", Rule::lenient, R"("A")", notText},
                 {"at", Rule::lenient, date1, notDate}});
}

TEST(Records, Message)
{
    checkRecord(Message{.id = u"m1"_s,
                        .conversationId = u"c1"_s,
                        .sender = MessageSender::system,
                        .agentId = u"a1"_s,
                        .via = MessageVia::email,
                        .mentions = QStringList{u"a2"_s},
                        .body = u"Hello"_s,
                        .attachment = Attachment{.fileId = u"f1"_s},
                        .createdAt = day(1)},
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
    checkRecord(Attachment{.fileId = u"f1"_s,
                           .name = u"a.png"_s,
                           .mime = u"image/png"_s,
                           .size = 10485760,
                           .kind = AttachmentKind::image,
                           .url = u"/files/f1"_s},
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
    checkRecord(ViewerAgent{.id = u"a1"_s, .name = u"Ada"_s},
                {{"id", Rule::required, R"("a1")", notText}, {"name", Rule::required, R"("Ada")", notText}});
    EXPECT_FALSE(decoded<ViewerAgent>(R"({"_id":"a1","name":"Ada"})"));
}

TEST(Records, SocketEvent)
{
    checkRecord(SocketEvent{.type = u"message"_s,
                            .conversationId = u"c1"_s,
                            .message = someMessage(),
                            .conversation = someConversation(),
                            .from = u"visitor"_s,
                            .preview = u"Hel"_s,
                            .by = u"agent"_s,
                            .at = day(1),
                            .agentId = u"a1"_s,
                            .agentName = u"Ada"_s,
                            .agents = std::vector{ViewerAgent{.id = u"a2"_s, .name = u"Bo"_s}}},
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
