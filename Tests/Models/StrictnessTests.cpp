#include "RecordChecks.h"

#include "Models/Conversation.h"
#include "Models/Message.h"
#include "Models/Responses.h"

#include <thread>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// The text of a document that is one message body, or none where the document fails.
std::optional<QString> bodyIn(const std::string& literal)
{
    const auto message =
        decoded<Message>(R"({"_id":"m","conversationId":"c","sender":"agent","body":)" + literal + "}");
    return message ? std::optional(message->body) : std::nullopt;
}

std::string nested(std::size_t levels)
{
    return std::string(levels, '[') + std::string(levels, ']');
}

} // namespace

TEST(StrictJSON, RefusesWhatTheGrammarDoesNotAllow)
{
    // Separated by bars; the first one is empty.
    const QByteArray refused =
        "| \n|[1,]|{\"a\":1,}|[,1]|[1 2]|[1] [2]|{} {}|{}x|{\"a\" 1}|{a:1}|{'a':1}|{\"a\":}|{1:1}"
        "|[1}|[|\"|\"a|nul|True|NaN|[Infinity]|[01]|[-01]|[+1]|[.5]|[1.]|[1e]|[1e+]|[-]|[0x10]"
        "|[0123456789012345678901234]|[1.e400]|[1-2]|[123456789012345678901.]|// comment\n1"
        "|[1 /* comment */]|\"\\x\"|\"\\u12\"|\"\\u12G4\"|\"\\ud83|\"\\\"";
    for (const QByteArray& each : refused.split('|')) {
        const std::string document = each.toStdString();
        const auto failure = failureOf<JSONValueIgnored>(document);
        ASSERT_TRUE(failure) << document;
        EXPECT_EQ(failure->kind(), DecodingError::Kind::syntax) << document;
    }
}

TEST(StrictJSON, RefusesRawControlCharactersInTexts)
{
    for (char c = 0; c < 0x20; ++c)
        EXPECT_EQ(bodyIn(std::string("\"a") + c + "b\""), std::nullopt) << static_cast<int>(c);
    EXPECT_EQ(bodyIn("\"a\x7f\""), u"a\u007F"_s);
}

TEST(StrictJSON, RefusesInvalidUTF8)
{
    for (const std::string text : {"\x80", "\xC3", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xED\xBF\xBF",
                                   "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF", "a\xE2\x82"})
        EXPECT_EQ(bodyIn("\"" + text + "\""), std::nullopt) << testing::PrintToString(text);
    EXPECT_EQ(decoded<JSONValueIgnored>("{\"\xFF\":1}"), std::nullopt);
}

TEST(StrictJSON, TextsArriveWhole)
{
    EXPECT_EQ(bodyIn(R"("")"), u""_s);
    EXPECT_EQ(bodyIn(R"("\"\\\/\b\f\n\r\t")"), u"\"\\/\b\f\n\r\t"_s);
    EXPECT_EQ(bodyIn(R"("a\u0000b")"), QString(u"a"_s + QChar(0) + u"b"_s));
    EXPECT_EQ(bodyIn(R"("\u00e4\u20AC\ud83d\uDE00")"), u"\u00E4\u20AC\U0001F600"_s);
    EXPECT_EQ(bodyIn("\"\u00E4\u20AC\U0001F600\uFEFF\""), u"\u00E4\u20AC\U0001F600\uFEFF"_s);
    const std::string longText(5'000'000, 'x');
    EXPECT_EQ(bodyIn("\"" + longText + "\""), QString(5'000'000, u'x'));
}

TEST(StrictJSON, HalfASurrogatePairIsNoCharacter)
{
    for (const char* literal :
         {R"("cut \ud83d")", R"("\ud83dx")", R"("\udc00x")", R"("\uD83D\u0041")", R"("\ud83d\n")",
          R"("\ud83d\ud83d\ude00")", R"("\ude00\ud83d")", R"("\ud83d\\ude00")"})
        EXPECT_EQ(bodyIn(literal), std::nullopt) << literal;
    EXPECT_EQ(bodyIn(R"("\\ud83d")"), u"\\ud83d"_s) << "an escaped backslash begins no escape";
}

TEST(StrictJSON, AByteOrderMarkIsIgnoredAtTheBeginningOnly)
{
    EXPECT_TRUE(decoded<JSONValueIgnored>("\xEF\xBB\xBF{}"));
    EXPECT_FALSE(decoded<JSONValueIgnored>("\xEF\xBB\xBF\xEF\xBB\xBF{}"));
    EXPECT_FALSE(decoded<JSONValueIgnored>("\xEF\xBB\xBF"));
    EXPECT_FALSE(decoded<JSONValueIgnored>("{}\xEF\xBB\xBF"));
    EXPECT_EQ(bodyIn("\"\xEF\xBB\xBFx\""), u"\uFEFFx"_s) << "within a document it is a character";
    EXPECT_FALSE(decoded<JSONValueIgnored>(std::string("\xFF\xFE{\0}\0", 6)));
}

TEST(StrictJSON, DepthIsBounded)
{
    EXPECT_TRUE(decoded<JSONValueIgnored>(nested(APIJSON::maxDepth - 1)));
    EXPECT_FALSE(decoded<JSONValueIgnored>(nested(APIJSON::maxDepth + 1)));
    EXPECT_FALSE(decoded<JSONValueIgnored>(nested(1'000'000)));
    EXPECT_FALSE(decoded<JSONValueIgnored>(std::string(1'000'000, '[')));
    // A parser that failed is as good as new.
    EXPECT_TRUE(decoded<JSONValueIgnored>("[[]]"));
}

TEST(StrictJSON, SizeIsBounded)
{
    QByteArray document(APIJSON::maxDocumentBytes + 1, ' ');
    document[0] = '1';
    EXPECT_THROW(APIJSON::decoder.decode<JSONValueIgnored>(document), DecodingError);
    EXPECT_THROW(APIJSON::decoder.decode<JSONValueIgnored>(QByteArrayView()), DecodingError);
}

TEST(StrictJSON, TheCoderServesSeveralThreadsAtOnce)
{
    std::atomic<int> good = 0;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&good, i] {
            for (int score = 0; score < 500; ++score) {
                const auto rating = decoded<Rating>(R"({"score":)" + std::to_string(score * 4 + i) + "}");
                good += rating && rating->score == score * 4 + i ? 1 : 0;
            }
        });
    }
    threads.clear();
    EXPECT_EQ(good, 2000);
}

} // namespace orvia
