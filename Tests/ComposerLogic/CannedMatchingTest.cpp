#include "ComposerLogic/CannedMatching.h"

#include <gmock/gmock.h>

namespace orvia {
namespace {

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

CannedResponse response(const QString& shortcut, const QString& body)
{
    return {shortcut, std::nullopt, shortcut, body, std::nullopt};
}

std::vector<QString> offered(const QString& text, const std::vector<CannedResponse>& canned)
{
    std::vector<QString> shortcuts;
    for (const CannedResponse& match : CannedMatching::matches(text, canned, 6))
        shortcuts.push_back(match.shortcut);
    return shortcuts;
}

TEST(CannedMatching, OffersWhatBeginsWithTheQuery)
{
    const std::vector<CannedResponse> canned{response(u"thanks"_s, u"Great to hear that"_s),
                                             response(u"greet"_s, u"Hello"_s),
                                             response(u"xgreet"_s, u"Welcome"_s),
                                             response(u"s"_s, u" starts with a space"_s),
                                             response(u"e"_s, u"\u00C9t\u00E9 comme hiver"_s),
                                             response(u"last"_s, u"ΟΔΟΣ"_s),
                                             response(u"seventh"_s, u"x"_s)};
    EXPECT_THAT(offered(u"/GR"_s, canned), ElementsAre(u"thanks"_s, u"greet"_s));
    EXPECT_THAT(offered(u"/ "_s, canned), ElementsAre(u"s"_s));
    EXPECT_THAT(offered(u"/"_s, canned),
                ElementsAre(u"thanks"_s, u"greet"_s, u"xgreet"_s, u"s"_s, u"e"_s, u"last"_s));
    // A slash with a mark on it is another character, and a prefix ends where a whole character does.
    for (const QString& text :
         {u"hello"_s, u" /greet"_s, u""_s, u"/greet "_s, u"/\u0338greet"_s, u"/\u00E9te"_s})
        EXPECT_THAT(offered(text, canned), IsEmpty()) << qPrintable(text);
    EXPECT_THAT(offered(u"/E\u0301T"_s, canned), ElementsAre(u"e"_s)) << "canonically equivalent";
    EXPECT_THAT(offered(u"/ΟΔΟΣ"_s, canned), ElementsAre(u"last"_s));
}

TEST(CannedMatching, ReadsNoMoreThanThePrefixOfALongBody)
{
    const QString longBody = u"Caf"_s + u"e\u0301"_s.repeated(50'000);
    const std::vector<CannedResponse> canned{response(u"long"_s, longBody),
                                             response(u"marks"_s, u"a"_s + QString(5'000, QChar(u'\u0323'))),
                                             response(u"wide"_s, u"\U0002F800\U0002F801rest"_s)};
    EXPECT_THAT(offered(u"/caf\u00E9\u00E9"_s, canned), ElementsAre(u"long"_s));
    EXPECT_THAT(offered(u'/' + longBody, canned), ElementsAre(u"long"_s));
    EXPECT_THAT(offered(u"/a"_s, canned), IsEmpty());
    // Ideographs that decompose from two code units to one.
    EXPECT_THAT(offered(u"/\u4E3D\u4E38"_s, canned), ElementsAre(u"wide"_s));
}

} // namespace
} // namespace orvia
