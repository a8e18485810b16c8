#include "RecordChecks.h"

#include "Models/JSON/Hashing.h"
#include "Models/Product.h"
#include "Models/Responses.h"
#include "Models/SocketEvent.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// The keys of a record's members that are not optional, with spaces between.
struct Rules {
    QByteArray required = {};  ///< missing, null or of the wrong type fails the record
    QByteArray lenient = {};   ///< of the wrong type is absent
    QByteArray defaulted = {}; ///< missing and null are the empty text
};

std::string textOf(const QJsonObject& members)
{
    return QJsonDocument(members).toJson(QJsonDocument::Compact).toStdString();
}

/// Holds a record to its wire form: all members together, and each one missing, null and of the wrong type.
template <class T>
void checkRecord(const T& full, const std::string& document, const Rules& rules)
{
    EXPECT_EQ(encoded(full), document);
    EXPECT_EQ(decoded<T>(document), full);
    const QJsonObject members = QJsonDocument::fromJson(bytes(document)).object();
    for (const QString& key : members.keys()) {
        const auto isOneOf = [&key](const QByteArray& keys) {
            return keys.split(' ').contains(key.toUtf8());
        };
        QJsonObject missing = members;
        missing.remove(key);
        QJsonObject null = members;
        null[key] = QJsonValue::Null;
        QJsonObject wrong = members;
        wrong[key] = -0.5; // suits no member of any record
        QJsonObject absent = missing;
        if (isOneOf(rules.defaulted))
            absent[key] = QString();
        for (const QJsonObject& tried : {missing, null, wrong}) {
            SCOPED_TRACE(textOf(tried));
            const auto record = decoded<T>(textOf(tried));
            const bool isAccepted = isOneOf(rules.lenient) || (!isOneOf(rules.required) && tried != wrong);
            ASSERT_EQ(record.has_value(), isAccepted);
            if (record) {
                EXPECT_TRUE(QJsonDocument::fromJson(bytes(encoded(*record))).object() == absent)
                    << encoded(*record);
            }
        }
    }
}

Instant day(int number)
{
    return *instantFromISO8601("2024-05-0" + std::to_string(number) + "T12:30:45Z");
}

const Visitor vera{.name = u"Vera"_s, .email = u"vera@visitor.example"_s, .meta = std::nullopt};
const Conversation plain{
    .id = u"c1"_s, .productId = u"p1"_s, .visitor = vera, .status = ConversationStatus::open};
const std::string plainText =
    R"({"_id":"c1","productId":"p1","visitor":{"name":"Vera","email":"vera@visitor.example"},"status":"open"})";

} // namespace

// The members of each record stand in the order in which they are written.

TEST(Records, OfTheTeam)
{
    checkRecord(
        Agent{u"a1"_s, u"Ada"_s, u"ada@team.example"_s, AgentRole::admin, QStringList{u"p1"_s, u"p2"_s},
              NotifyMode::mentions, QStringList{}},
        R"({"_id":"a1","name":"Ada","email":"ada@team.example","role":"admin","productIds":["p1","p2"],)"
        R"("notifyMode":"mentions","mutedConversationIds":[]})",
        {.required = "_id name role", .lenient = "notifyMode", .defaulted = "email"});
    checkRecord(ViewerAgent{u"a1"_s, u"Ada"_s}, R"({"id":"a1","name":"Ada"})", {.required = "id name"});
}

TEST(Records, OfProducts)
{
    const WidgetGreeting greeting{true, 8, u"Hi"_s};
    const std::string greetingText = R"({"enabled":true,"delaySeconds":8,"text":"Hi"})";
    checkRecord(greeting, greetingText, {});
    const WidgetConfig widget{u"Chat"_s, u"#c2410c"_s, u"left"_s, greeting};
    const std::string widgetText =
        R"({"title":"Chat","accentColor":"#c2410c","position":"left","greeting":)" + greetingText + "}";
    checkRecord(widget, widgetText, {});
    checkRecord(Product{u"p1"_s, u"Shop"_s, u"shop"_s, u"pk"_s, widget, day(1)},
                R"({"_id":"p1","name":"Shop","slug":"shop","publicKey":"pk","widget":)" + widgetText
                    + R"(,"createdAt":"2024-05-01T12:30:45Z"})",
                {.required = "_id name slug"});
    checkRecord(
        CannedResponse{u"r1"_s, u"p1"_s, u"hi"_s, u"Good day"_s, day(1)},
        R"({"_id":"r1","productId":"p1","shortcut":"hi","body":"Good day","createdAt":"2024-05-01T12:30:45Z"})",
        {.required = "_id shortcut body"});
}

TEST(Records, OfConversations)
{
    checkRecord(Conversation{u"c1"_s, u"p1"_s, vera, ConversationStatus::closed, u"a1"_s, day(1), day(2),
                             day(3), u"Hello"_s, 4, 5, day(4), day(5),
                             Rating{.score = 3, .comment = std::nullopt}, day(6)},
                R"({"_id":"c1","productId":"p1","visitor":{"name":"Vera","email":"vera@visitor.example"},)"
                R"("status":"closed","assigneeId":"a1","assignedAt":"2024-05-01T12:30:45Z",)"
                R"("snoozedUntil":"2024-05-02T12:30:45Z","lastMessageAt":"2024-05-03T12:30:45Z",)"
                R"("lastMessagePreview":"Hello","visitorUnread":4,"agentUnread":5,)"
                R"("visitorLastReadAt":"2024-05-04T12:30:45Z","agentLastReadAt":"2024-05-05T12:30:45Z",)"
                R"("rating":{"score":3},"createdAt":"2024-05-06T12:30:45Z"})",
                {.required = "_id productId visitor status"});
    checkRecord(Rating{5, u"Great"_s}, R"({"score":5,"comment":"Great"})", {.required = "score"});
    checkRecord(SearchResult{plain, u"found"_s, u"m1"_s},
                R"({"conversation":)" + plainText + R"(,"snippet":"found","messageId":"m1"})",
                {.required = "conversation snippet"});
}

TEST(Records, OfVisitors)
{
    checkRecord(Visitor{u"Vera"_s, u""_s, VisitorMeta{.ip = u"::1"_s}},
                R"({"name":"Vera","email":"","meta":{"ip":"::1"}})", {.required = "name email"});
    OrderedStringMap data;
    data.pairs = {{u"plan"_s, u"pro"_s}, {u"a"_s, u""_s}};
    checkRecord(
        VisitorMeta{u"u"_s, u"r"_s, u"ua"_s, u"192.0.2.1"_s, VisitorGeo{.city = u"Graz"_s}, u"de"_s,
                    u"1920x1080"_s, -120, std::vector{VisitorPage{.url = u"/"_s}, VisitorPage{}}, data},
        R"({"url":"u","referrer":"r","userAgent":"ua","ip":"192.0.2.1","geo":{"city":"Graz"},"language":"de",)"
        R"("screen":"1920x1080","timezoneOffset":-120,"pages":[{"url":"/"},{}],"data":{"plan":"pro","a":""}})",
        {.lenient = "url referrer userAgent ip geo language screen timezoneOffset pages data"});
    checkRecord(VisitorGeo{u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s, u"f"_s},
                R"({"city":"a","region":"b","country":"c","countryCode":"d","timezone":"e","org":"f"})",
                {.lenient = "city region country countryCode timezone org"});
    checkRecord(VisitorPage{u"/a"_s, u"A"_s, day(1)},
                R"({"url":"/a","title":"A","at":"2024-05-01T12:30:45Z"})", {.lenient = "url title at"});
    EXPECT_EQ(decoded<VisitorMeta>(R"({"pages":[{"url":"/"},7],"geo":"Graz","data":[],"ip":"::1"})"),
              VisitorMeta{.ip = u"::1"_s})
        << "one bad page makes all of them absent";
}

TEST(Records, WhatIsReadLaterIsWhatWasReceived)
{
    // In one document with others, so that they share its text.
    const auto page = decoded<ConversationsResponse>(
        R"({"conversations":[{"_id":"1","productId":"p","status":"open","visitor":{"name":"","email":"",)"
        R"("meta":{"ip":"192.0.2.1","pages":[{"at":"2024-05-01T12:30:45.5Z"}]}}},)"
        R"({"_id":"2","productId":"p","status":"open","visitor":{"name":"","email":"","meta":[]}},)"
        R"({"_id":"3","productId":"p","status":"open","visitor":{"name":"","email":"",)"
        R"("meta":{ "later":1,"\u0069p":"::1" , "geo":7}}}]})");
    ASSERT_TRUE(page);
    const std::vector<Conversation> read = page->conversations.wrappedValue;
    ASSERT_EQ(read.size(), 2U) << "no object, no visitor";
    const Visitor& first = read[0].visitor;
    const Visitor& second = read[1].visitor;
    EXPECT_EQ(first.meta->value()->pages->front().at, day(1) + std::chrono::milliseconds(500));
    EXPECT_EQ(*second.meta->value(), VisitorMeta{.ip = u"::1"_s});

    Visitor same = second;
    same.meta = VisitorMeta{.ip = u"::1"_s};
    EXPECT_EQ(same, second) << "however it was written";
    EXPECT_EQ(qHash(same, 0), qHash(second, 0));
    same.meta.emplace();
    EXPECT_NE(same, second);
    EXPECT_EQ(*same.meta->value(), VisitorMeta());

    VisitorMeta talkative;
    talkative.url = QString(20'000, u'\u00e9');
    same.meta = talkative;
    EXPECT_EQ(same.meta->value(), same.meta->value()) << "a long one is read once";
    EXPECT_EQ(*same.meta->value(), talkative);
    EXPECT_EQ(decoded<Visitor>(encoded(same)), same);
}

TEST(Records, OfMessagesAndEvents)
{
    checkRecord(
        Attachment{u"f1"_s, u"a.png"_s, u"image/png"_s, 10485760, AttachmentKind::image, u"/files/f1"_s},
        R"({"fileId":"f1","name":"a.png","mime":"image/png","size":10485760,"kind":"image","url":"/files/f1"})",
        {});
    const Message message{u"m1"_s,
                          u"c1"_s,
                          MessageSender::system,
                          u"a1"_s,
                          MessageVia::email,
                          QStringList{u"a2"_s},
                          u"Hello"_s,
                          Attachment{.fileId = u"f1"_s},
                          day(1)};
    const std::string messageText =
        R"({"_id":"m1","conversationId":"c1","sender":"system","agentId":"a1","via":"email","mentions":["a2"],)"
        R"("body":"Hello","attachment":{"fileId":"f1"},"createdAt":"2024-05-01T12:30:45Z"})";
    checkRecord(message, messageText, {.required = "_id conversationId sender body"});
    checkRecord(SocketEvent{u"message"_s, u"c1"_s, message, plain, u"visitor"_s, u"Hel"_s, u"agent"_s, day(1),
                            u"a1"_s, u"Ada"_s, std::vector{ViewerAgent{.id = u"a2"_s, .name = u"Bo"_s}}},
                R"({"type":"message","conversationId":"c1","message":)" + messageText + R"(,"conversation":)"
                    + plainText
                    + R"(,"from":"visitor","preview":"Hel","by":"agent","at":"2024-05-01T12:30:45Z",)"
                      R"("agentId":"a1","agentName":"Ada","agents":[{"id":"a2","name":"Bo"}]})",
                {.required = "type"});
}

TEST(Records, TakeNoValueForAnother)
{
    for (const std::string member :
         {R"("preview":1)", R"("preview":true)", R"("preview":["x"])", R"("at":1714566645)", R"("at":"")",
          R"("agents":{})", R"("agents":[{"id":"a2","name":"Bo"},null])", R"("message":[])",
          R"("message":{})"})
        EXPECT_FALSE(decoded<SocketEvent>(R"({"type":"x",)" + member + "}")) << member;
    for (const std::string document : {R"({"enabled":1})", R"({"enabled":"true"})", R"({"delaySeconds":"8"})",
                                       R"({"delaySeconds":true})", "[]", "null", "17", R"("text")"})
        EXPECT_FALSE(decoded<WidgetGreeting>(document)) << document;
    for (const std::string role : {"Admin", "admins", "dmin", " admin", ""})
        EXPECT_FALSE(decoded<Agent>(R"({"_id":"a","name":"A","role":")" + role + "\"}")) << role;
}

TEST(Records, MayHoldMoreInAnyOrderAndTheLastOfARepeatedKeyCounts)
{
    const Rating rating{.score = 2, .comment = u"b"_s};
    EXPECT_EQ(decoded<Rating>(R"({"later":{"score":[1]},"comment":"b","score":2})"), rating);
    EXPECT_EQ(decoded<Rating>(R"({"score":1,"comment":"a","score":2,"comment":"b"})"), rating);
    EXPECT_EQ(decoded<Rating>(R"({ "\u0073core" : 2 , "comment" : "b" })"), rating);
}

TEST(Records, FailuresSayWhatIsWrong)
{
    using Kind = DecodingError::Kind;
    EXPECT_EQ(failureOf<Rating>("{}")->kind(), Kind::missingMember);
    EXPECT_EQ(failureOf<Rating>("{}")->description(), u"Missing member: score"_s);
    EXPECT_EQ(failureOf<Rating>(R"({"score":"5"})")->kind(), Kind::typeMismatch);
    EXPECT_EQ(failureOf<Rating>(R"({"score":5)")->kind(), Kind::syntax);
    EXPECT_EQ(failureOf<Attachment>(R"({"kind":"film"})")->kind(), Kind::corruptedData);
    const auto failure = failureOf<SocketEvent>(R"({"type":"read","at":"2024-05-01"})");
    EXPECT_EQ(failure->kind(), Kind::corruptedData);
    EXPECT_EQ(failure->description(), u"Unrecognized date: 2024-05-01"_s);
}

TEST(Records, IntegersCoverSixtyFourBitsAndMayBeWrittenWithPointOrExponent)
{
    const auto scoreIn = [](const std::string& number) {
        const auto rating = decoded<Rating>(R"({"score":)" + number + "}");
        return rating ? std::optional(rating->score) : std::nullopt;
    };
    EXPECT_EQ(scoreIn("9223372036854775807"), std::numeric_limits<qint64>::max());
    EXPECT_EQ(scoreIn("-9223372036854775808"), std::numeric_limits<qint64>::min());
    EXPECT_EQ(scoreIn("-0"), 0);
    EXPECT_EQ(scoreIn("-5.0"), -5);
    EXPECT_EQ(scoreIn("1.5e1"), 15);
    for (const std::string number :
         {"9223372036854775808", "123456789012345678901234567890", "1e30", "1e999", "5.5"})
        EXPECT_EQ(scoreIn(number), std::nullopt) << number;
}

TEST(Enums, KeepTheOrderOfTheirTexts)
{
    const auto textsOf = [](const auto& cases) {
        QStringList texts;
        for (const auto value : cases)
            texts.append(wireText(value));
        return texts.join(u' ');
    };
    EXPECT_EQ(textsOf(allCases<NotifyMode>()), u"all mine mentions"_s);
    EXPECT_EQ(textsOf(allCases<MessageSender>()), u"visitor agent system note"_s);
    EXPECT_EQ(textsOf(allCases<InboxQueue>()), u"all unassigned mine"_s);
}

} // namespace orvia
