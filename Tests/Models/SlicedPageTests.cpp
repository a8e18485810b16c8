#include "Models/JSON/Decoding.h"
#include "Models/Responses.h"
#include "RecordGenerator.h"

#include <gmock/gmock.h>

/// Pages that are read in slices, held against the same documents read as a whole.
namespace orvia {

using namespace Qt::StringLiterals;
using testing::Optional;

namespace {

using Page = ConversationsResponse;

/// The page as read in one piece, which small documents are.
std::optional<Page> wholePage(const QByteArray& document)
{
    try {
        return json::decode<Page>(document);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

QByteArrayList generatedElements(int count)
{
    RecordGenerator generator(7);
    QByteArrayList elements;
    for (int index = 0; index < count; ++index)
        elements.append(APIJSON::encoder.encode(generator.make<Conversation>()));
    return elements;
}

QByteArray pageOf(const QByteArrayList& elements, const QByteArray& separator = ",")
{
    return R"({"conversations":[)" + elements.join(separator) + "]}";
}

} // namespace

TEST(SlicedPages, HoldWhatTheWholeHolds)
{
    QByteArrayList elements = generatedElements(40);
    const QByteArrayList rubbish{"null",         "1.5e3", R"("],[{\"}{\\")", "[]", "[[1,2],{\"a\":[]}]", "{}",
                                 R"({"a":"}"})", "true"};
    for (qsizetype index = 0; index < rubbish.size(); ++index)
        elements.insert(index * 5, rubbish[index]);
    const QByteArrayList documents{pageOf(elements),
                                   pageOf(elements.mid(1)),
                                   pageOf(elements, " ,\r\n\t"),
                                   "\xEF\xBB\xBF \n{ \"conversations\" : [ " + elements.join(',') + " ] } \n",
                                   pageOf({elements[1]}),
                                   pageOf({"0"})};
    for (const QByteArray& document : documents) {
        const auto whole = wholePage(document);
        ASSERT_TRUE(whole) << document.toStdString();
        for (const std::size_t size : {1, 700, 1'000'000})
            EXPECT_THAT(json::decodeInSlices<Page>(document, size), Optional(*whole)) << size;
    }
}

TEST(SlicedPages, AreNoneWhereTheWholeIsNone)
{
    const QByteArray good = generatedElements(1).first();
    const QByteArrayList middles{"",           " ",    "{",        "}",      "[",   "]",   "[}",
                                 "{]",         "\"",   "\"\\\"",   "\"\n\"", "nul", "1 2", "{\"a\"}",
                                 "{\"a\":1,}", "\xFF", "\"\xFF\"", "}]",     "]}",  "01"};
    for (const QByteArray& middle : middles) {
        for (const QByteArray& document :
             {pageOf({good, middle, good}), pageOf({middle, good}), pageOf({good, middle})}) {
            ASSERT_FALSE(wholePage(document)) << document.toStdString();
            for (const std::size_t size : {1, 700})
                EXPECT_FALSE(json::decodeInSlices<Page>(document, size)) << document.toStdString();
        }
    }
    const QByteArray page = pageOf({good, good});
    for (qsizetype length = 0; length < page.size(); ++length)
        EXPECT_FALSE(json::decodeInSlices<Page>(page.first(length), 1)) << length;
    for (const QByteArray trailing : {"x", ",", "}", "]", "{}"})
        EXPECT_FALSE(json::decodeInSlices<Page>(page + trailing, 1)) << trailing.toStdString();
}

TEST(SlicedPages, LeaveOtherDocumentsToBeReadAsAWhole)
{
    for (const QByteArray document :
         {R"({"conversations":[0],"next":null})", R"({"next":[],"conversations":[0]})",
          R"({"conversations":[{"a":1,"b":[{"a":2},{"a":3}]},{"a":4}]})", R"({"\u0063onversations":[0]})",
          R"({"conversations":{}})", R"([0])", R"({"conversations":[]})"})
        EXPECT_FALSE(json::decodeInSlices<Page>(document, 1)) << document.toStdString();
}

TEST(SlicedPages, AreNestedAsDeepAsTheWhole)
{
    for (int levels = 505; levels < 515; ++levels) {
        const QByteArray document = pageOf({"0", QByteArray(levels, '[') + QByteArray(levels, ']'), "0"});
        EXPECT_EQ(json::decodeInSlices<Page>(document, 1).has_value(), wholePage(document).has_value())
            << levels;
    }
}

TEST(SlicedPages, LargeOnesComeInOrderAndAnErrorInThemIsTold)
{
    QByteArrayList elements;
    for (int number = 0; number < 6'000; ++number)
        elements.append(R"({"_id":"%1","productId":"p","visitor":{"name":"V","email":""},"status":"open"})");
    for (qsizetype number = 0; number < elements.size(); ++number)
        elements[number].replace("%1", QByteArray::number(number));
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
