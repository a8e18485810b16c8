#include "RecordChecks.h"

#include "Models/Responses.h"

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

TEST(StrictJSON, HoldsWhereNobodyReads)
{
    // A member that no record names, a record that is read later, what follows a member or an element that
    // fails, and an element that is none.
    for (const QByteArray place :
         {R"({"conversations":[],"later":@})",
          R"({"conversations":[{"visitor":{"name":"V","email":"","meta":{"url":@}}}]})",
          R"({"conversations":[{"_id":7,"productId":@}]})",
          R"({"conversations":[{"visitor":{"name":"V","email":"","meta":{"pages":[7,@]}}}]})",
          R"({"conversations":[[0,@]]})"}) {
        const auto with = [&place](const char* value) {
            return QByteArray(place).replace('@', value).toStdString();
        };
        for (const char* value :
             {R"("\u0041")", R"("\ud83d")", "-0.5e2", "1e999", "null", R"({"\u0041":[]})"})
            EXPECT_TRUE(decoded<ConversationsResponse>(with(value))) << with(value);
        for (const char* broken :
             {"", "nul", "tru", "01", "-", "1 2", "[1}", "[1,]", R"({"a"})", R"({"a":1,})", R"("\x")",
              R"({"\x":1})", R"("\u12")", "\"a\nb\"", "\"\xFF\""}) {
            const auto failure = failureOf<ConversationsResponse>(with(broken));
            ASSERT_TRUE(failure) << with(broken);
            EXPECT_EQ(failure->kind(), DecodingError::Kind::syntax) << with(broken);
        }
    }
}

TEST(StrictJSON, RefusesTextsThatAreNone)
{
    for (char c = 0; c < 0x20; ++c)
        EXPECT_EQ(bodyIn(std::string("\"a") + c + "b\""), std::nullopt) << static_cast<int>(c);
    for (const std::string text : {"\x80", "\xC3", "\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xED\xBF\xBF",
                                   "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF", "a\xE2\x82"})
        EXPECT_EQ(bodyIn("\"" + text + "\""), std::nullopt) << testing::PrintToString(text);
}

TEST(StrictJSON, HalfASurrogatePairCostsNoMoreThanItself)
{
    const std::pair<const char*, QString> cases[] = {
        {R"("cut \ud83d")", u"cut \uFFFD"_s},     {R"("\ud83dx")", u"\uFFFDx"_s},
        {R"("\udc00x")", u"\uFFFDx"_s},           {R"("\uD83D\u0041")", u"\uFFFDA"_s},
        {R"("\ud83d\n")", u"\uFFFD\n"_s},         {R"("\ud83d\ud83d\ude00\"")", u"\uFFFD\U0001F600\""_s},
        {R"("\ude00\ud83d")", u"\uFFFD\uFFFD"_s}, {R"("\ud83d\\ude00")", u"\uFFFD\\ude00"_s},
        {R"("\\\ud83d")", u"\\\uFFFD"_s},
    };
    for (const auto& [literal, text] : cases)
        EXPECT_EQ(bodyIn(literal), text) << literal;
    for (const char* refused : {R"("\ud83d\x")", R"("\ud83d\u12")", R"("\ud83d)", R"("\ud83d\)"})
        EXPECT_EQ(bodyIn(refused), std::nullopt) << refused;
}

TEST(StrictJSON, TextsArriveWholeAndAsTheyWereWritten)
{
    EXPECT_EQ(bodyIn(R"("\\ud83d")"), u"\\ud83d"_s) << "an escaped backslash begins no escape";
    EXPECT_EQ(bodyIn(R"("\"\\\/\b\f\n\r\t")"), u"\"\\/\b\f\n\r\t"_s);
    EXPECT_EQ(bodyIn(R"("a\u0000b")"), QString(u"a"_s + QChar(0) + u"b"_s));
    EXPECT_EQ(bodyIn(R"("\u00e4\u20AC\ud83d\uDE00")"), u"\u00E4\u20AC\U0001F600"_s);
    EXPECT_EQ(bodyIn("\"\x7f\u00E4\u20AC\U0001F600\uFEFF\""), u"\u007F\u00E4\u20AC\U0001F600\uFEFF"_s);
    QString all = u"\U0001F469\u200D\U0001F467"_s;
    for (char32_t character = 0; character <= 0xFFFF; ++character) {
        if (!QChar::isSurrogate(character))
            all += QChar(character);
    }
    const ViewerAgent viewer{u"\uFEFF"_s + all, all.repeated(20)};
    EXPECT_TRUE(decoded<ViewerAgent>(encoded(viewer)) == viewer);
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

TEST(StrictJSON, DepthAndSizeAreBounded)
{
    const auto nested = [](std::size_t levels) {
        return std::string(levels, '[') + std::string(levels, ']');
    };
    EXPECT_TRUE(decoded<JSONValueIgnored>(nested(APIJSON::maxDepth - 1)));
    EXPECT_FALSE(decoded<JSONValueIgnored>(nested(APIJSON::maxDepth + 1)));
    EXPECT_FALSE(decoded<JSONValueIgnored>(std::string(1'000'000, '[')));
    EXPECT_TRUE(decoded<JSONValueIgnored>("[[]]")) << "a parser that failed is as good as new";

    std::string document(APIJSON::maxDocumentBytes + 1, ' ');
    document[0] = '1';
    EXPECT_FALSE(decoded<JSONValueIgnored>(document));
}

} // namespace orvia
