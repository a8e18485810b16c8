#include "Views/AdminViews/AdminRules.h"
#include "Views/ConversationListView/ListRules.h"

#include <gmock/gmock.h>

namespace orvia {
namespace {

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using UnicodeText::Range;

TEST(EmptyTitle, NamesTheStatusWhereTheQueueIsEverything)
{
    const auto open = ConversationStatus::open;
    EXPECT_EQ(ListRules::emptyTitle(InboxQueue::unassigned, open), u"Nothing Unassigned"_s);
    EXPECT_EQ(ListRules::emptyTitle(InboxQueue::all, open), u"No Open Conversations"_s);
    EXPECT_EQ(ListRules::emptyTitle(InboxQueue::all, ConversationStatus::closed),
              u"No Closed Conversations"_s);
}

TEST(Highlighted, FindsEveryOccurrence)
{
    EXPECT_THAT(ListRules::highlighted(u"aaaa"_s, u"aa"_s), ElementsAre(Range{0, 2}, Range{2, 2}));
    EXPECT_THAT(ListRules::highlighted(u"text"_s, u""_s), IsEmpty());
    EXPECT_THAT(ListRules::highlighted(u"Cafe\u0301 CAF\u00C9 cafe"_s, u"caf\u00E9"_s),
                ElementsAre(Range{0, 5}, Range{6, 4}));
    EXPECT_THAT(ListRules::highlighted(u"Cafe\u0301"_s, u"cafe"_s), IsEmpty());
    EXPECT_THAT(ListRules::highlighted(u"Stra\u00DFe"_s, u"STRA\u1E9EE"_s), ElementsAre(Range{0, 6}));
    EXPECT_THAT(ListRules::highlighted(u"\U0001F600 ok \U0001F600"_s, u"\U0001F600"_s),
                ElementsAre(Range{0, 2}, Range{6, 2}));
    EXPECT_EQ(ListRules::highlighted(QString(100'000, u'a'), u"A"_s).size(), 100'000U);
}

TEST(GreetingDelay, IsADecimalIntegerOrZero)
{
    EXPECT_EQ(AdminRules::greetingDelay(u"+7"_s), 7);
    EXPECT_EQ(AdminRules::greetingDelay(u"-3"_s), -3);
    EXPECT_EQ(AdminRules::greetingDelay(u"007"_s), 7);
    EXPECT_EQ(AdminRules::greetingDelay(u"-9223372036854775808"_s), std::numeric_limits<qint64>::min());
    for (const QString& text : {u"9223372036854775808"_s, u""_s, u"-"_s, u"+-5"_s, u" 5"_s, u"5 "_s, u"5s"_s,
                                u"1.5"_s, u"1,000"_s, u"0x10"_s, u"\u0665"_s})
        EXPECT_EQ(AdminRules::greetingDelay(text), 0) << qPrintable(text);
}

} // namespace
} // namespace orvia
