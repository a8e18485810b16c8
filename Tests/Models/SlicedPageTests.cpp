#include "Models/JSON/Decoding.h"
#include "Models/Responses.h"
#include "RecordChecks.h"

#include <gmock/gmock.h>

/// Pages that are read in slices, held against the same documents read as a whole.
namespace orvia {

using testing::Optional;

namespace {

using Page = ConversationsResponse;

/// Conversations that are told apart by their numbers; every other one has texts that look like other
/// elements.
QByteArrayList numbered(int count)
{
    QByteArrayList elements;
    for (int number = 0; number < count; ++number)
        elements.append("{\"_id\":\"" + QByteArray::number(number)
                        + R"(","productId":"p","visitor":{"name":")"
                        + (number % 2 == 0 ? "V" : R"(},{\"_id\":\"]}\\)")
                        + R"(","email":"","meta":{"pages":[{},{"url":"/"}]}},"status":"open"})");
    return elements;
}

QByteArray pageOf(const QByteArrayList& elements, const QByteArray& separator = ",")
{
    return R"({"conversations":[)" + elements.join(separator) + "]}";
}

} // namespace

TEST(SlicedPages, HoldWhatTheWholeHolds)
{
    QByteArrayList elements = numbered(40);
    const QByteArrayList rubbish{"null",         "1.5e3", R"("],[{\"}{\\")", "[]", "[[1,2],{\"a\":[]}]", "{}",
                                 R"({"a":"}"})", "true"};
    for (qsizetype index = 0; index < rubbish.size(); ++index)
        elements.insert(index * 5, rubbish[index]);
    const QByteArrayList documents{pageOf(elements), pageOf(elements.mid(1)), pageOf(elements, " ,\r\n\t"),
                                   "\xEF\xBB\xBF \n{ \"conversations\" : [ " + elements.join(',') + " ] } \n",
                                   pageOf({"0"})};
    for (const QByteArray& document : documents) {
        // Small documents are read in one piece.
        const auto whole = decoded<Page>(document.toStdString());
        ASSERT_TRUE(whole) << document.toStdString();
        for (const std::size_t size : {1, 700, 1'000'000})
            EXPECT_THAT(json::decodeInSlices<Page>(document, size), Optional(*whole)) << size;
    }
}

TEST(SlicedPages, AreNoneWhereTheWholeIsNone)
{
    const QByteArray good = numbered(1).first();
    for (const QByteArray middle :
         {"",       " ",   "{",   "}",       "[",          "]",    "[}",       "{]", "\"", "\"\\\"",
          "\"\n\"", "nul", "1 2", "{\"a\"}", "{\"a\":1,}", "\xFF", "\"\xFF\"", "}]", "]}", "01"}) {
        for (const QByteArray& document :
             {pageOf({good, middle, good}), pageOf({middle, good}), pageOf({good, middle})}) {
            ASSERT_FALSE(decoded<Page>(document.toStdString())) << document.toStdString();
            for (const std::size_t size : {1, 700})
                EXPECT_FALSE(json::decodeInSlices<Page>(document, size)) << document.toStdString();
        }
    }
    const QByteArray page = pageOf({good, good});
    for (qsizetype length = 0; length < page.size(); ++length)
        EXPECT_FALSE(json::decodeInSlices<Page>(page.first(length), 1)) << length;
    // Other documents are left to be read as a whole.
    for (const QByteArray& document :
         {page + 'x', page + ',', page + '}', page + "{}", QByteArray("[0]"),
          QByteArray(R"({"conversations":[0],"next":null})"),
          QByteArray(R"({"next":[],"conversations":[0]})"),
          QByteArray(R"({"conversations":[{"a":1,"b":[{"a":2},{"a":3}]},{"a":4}]})"),
          QByteArray(R"({"\u0063onversations":[0]})"), QByteArray(R"({"conversations":{}})")})
        EXPECT_FALSE(json::decodeInSlices<Page>(document, 1)) << document.toStdString();
}

TEST(SlicedPages, LargeOnesComeInOrderAndAnErrorInThemIsTold)
{
    QByteArrayList elements = numbered(6'000);
    const QByteArray document = pageOf(elements);
    ASSERT_GT(document.size(), json::worthSlicing);
    const std::vector<Conversation> records =
        APIJSON::decoder.decode<Page>(document).conversations.wrappedValue;
    ASSERT_EQ(records.size(), 6'000U);
    EXPECT_LE(records.capacity(), records.size() + records.size() / 4);
    for (std::size_t number = 0; number < records.size(); ++number)
        ASSERT_EQ(records[number].id, QString::number(number));

    elements[4'321] = "{\"_id\":}";
    EXPECT_THROW(APIJSON::decoder.decode<Page>(pageOf(elements)), DecodingError);
}

} // namespace orvia
