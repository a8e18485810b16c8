#include "InboxFixture.h"
#include "Theme/Theme.h"
#include "Views/ConversationListView/ConversationRow.h"
#include "Views/ConversationListView/RowText.h"
#include "Views/ConversationListView/SearchResultRow.h"
#include "Views/ConversationListView/SnippetLayout.h"
#include "Views/ConversationListView/TimeTick.h"

namespace orvia::test {

using namespace std::chrono_literals;
using testing::ElementsAre;

using RowValuesTest = InboxFixture;

TEST_F(RowValuesTest, SpeakEverythingThatARowShowsAndNothingElse)
{
    sessionWith({makeConversation(u"c"_s)});
    const auto rowOf = [&](const Conversation& shown) {
        return ConversationRow::of(*session, shown, currentInstant());
    };
    Conversation full = makeConversation(u"c"_s, 4);
    full.visitor.name = u"Helen <b>Brandt</b> & Co"_s;
    VisitorMeta meta;
    meta.geo.emplace().countryCode = u"de"_s;
    full.visitor.meta = meta;
    full.rating = Rating{4, u"Fine"_s};
    full.snoozedUntil = minutesAgo(-5);
    full.agentUnread = 2;
    deliverViewers(u"c"_s, {u"Dana"_s, u""_s});
    EXPECT_EQ(rowOf(full).accessibleText(*full.lastMessageAt + 4min),
              u"Helen <b>Brandt</b> & Co, DE, 4 minutes ago, Hello, 4/5, Larkspur Coffee, Snoozed, Unread, "
              "Dana viewing this conversation"_s);

    deliverTyping(u"c"_s, u"Because I"_s);
    EXPECT_EQ(rowOf(full).text, u"Because I"_s) << "what is being typed stands for the last message";

    Conversation bare;
    bare.visitor.name = u"Bo"_s;
    bare.productId = u"unknown"_s;
    bare.snoozedUntil = minutesAgo(1);
    bare.agentUnread = -1;
    EXPECT_EQ(rowOf(bare).accessibleText(currentInstant()), u"Bo"_s);

    SearchResult nameless{full, u"a refund please"_s, {}};
    nameless.conversation.visitor.name.clear();
    EXPECT_EQ(SearchResultRow::of(*session, nameless).accessibleText(*full.lastMessageAt + 3min),
              u"Visitor, 3 minutes ago, a refund please, Larkspur Coffee"_s);
}

TEST(RowTextTest, ShowsATextWholeInTheWidthItAsksFor)
{
    const QFont font = Theme::font(TextRole::caption);
    QImage whole(400, 20, QImage::Format_RGB32);
    QImage exact = whole;
    for (const QString& text : {u"5/5"_s, u"26 minutes ago"_s, u"yesterday"_s, u"DE"_s}) {
        const int width = QFontMetrics(font).horizontalAdvance(text);
        const auto paint = [&](QImage& image, int available) {
            image.fill(Qt::white);
            QPainter painter(&image);
            return paintRowText(painter, {0, 0, available, 20}, text, font, Qt::black, Qt::LeftToRight);
        };
        EXPECT_EQ(paint(whole, 400), width);
        EXPECT_EQ(paint(exact, width), width);
        EXPECT_EQ(whole, exact) << text.toStdString();
        EXPECT_LE(paint(exact, width / 2), width / 2);
        EXPECT_NE(whole, exact) << text.toStdString();
    }
}

TEST(SnippetLayoutTest, HasTwoLinesAtMostAndMarksTheHits)
{
    const auto layout = [](const QString& snippet, const QString& query, int width = 290) {
        return SnippetLayout(snippet, query, width, Qt::LeftToRight);
    };
    const SnippetLayout shortOne = layout(u"Refunds:\na refund"_s, u"refund"_s);
    const int line = shortOne.height();
    EXPECT_THAT(shortOne.hits(), ElementsAre(UnicodeText::Range{0, 6}, UnicodeText::Range{11, 6}));
    EXPECT_EQ(shortOne.shownText(), u"Refunds: a refund"_s);

    const QString sentence = u"You are right, the card was charged twice. "_s;
    const SnippetLayout longOne = layout(sentence.repeated(2000), u"card"_s);
    EXPECT_EQ(longOne.height(), 2 * line);
    EXPECT_TRUE(longOne.shownText().endsWith(u"…"_s));
    EXPECT_GT(longOne.shownText().size(), sentence.size());
    EXPECT_LE(longOne.shownText().size(), 600);

    // A word that no line holds, and a width that holds no word.
    EXPECT_EQ(layout(QString(100'000, u'x'), u"x"_s).height(), 2 * line);
    EXPECT_LE(layout(sentence, u"card"_s, 1).height(), 2 * line);
}

TEST(TimeTickTest, TicksWhenWordsChangeButNeverTooOften)
{
    const Instant now = std::chrono::floor<std::chrono::seconds>(currentInstant());
    TimeTick tick([&] { return now; }, 60s);
    int ticks = 0;
    QObject::connect(&tick, &TimeTick::ticked, [&] { ++ticks; });
    tick.request(now - 20min - 10s);
    EXPECT_EQ(tick.due(), now + 50s);
    tick.request(now - 20min - 40s);
    tick.request(now - 20min - 10s);
    EXPECT_EQ(tick.due(), now + 20s) << "the earliest of the rows";

    // Ten milliseconds before its words change, which is waited for.
    tick.request(now - 20min - 60s + 10ms);
    ASSERT_TRUE(waitUntil([&] { return ticks == 1; }));
    EXPECT_EQ(tick.due(), std::nullopt) << "nothing is due until a row is painted again";
    tick.request(now - 20min - 60s + 10ms);
    EXPECT_EQ(tick.due(), now + 60s);
}

} // namespace orvia::test
