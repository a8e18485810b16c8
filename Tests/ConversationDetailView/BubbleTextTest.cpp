#include "Views/ConversationDetailView/Transcript/BubbleText.h"

#include "Support/Printing.h"

#include <QFont>

#include <gmock/gmock.h>

namespace orvia {
namespace {

using namespace Qt::StringLiterals;

constexpr int lineHeight = 18;

BubbleText laidOut(const QString& text, qreal width = 300)
{
    BubbleText bubble(text, {QFont(), lineHeight, Qt::AlignLeading});
    bubble.layOut(width);
    return bubble;
}

TEST(BubbleText, isAsWideAsItsLongestLineAndAsHighAsItsLines)
{
    const BubbleText word = laidOut(u"Hello"_s);
    EXPECT_EQ(word.lineCount(), 1);
    EXPECT_LT(word.size().width(), 100);
    const BubbleText lines = laidOut(u"Hello\n\na longer line"_s);
    EXPECT_EQ(lines.lineCount(), 3);
    EXPECT_EQ(lines.size().height(), 3 * lineHeight);
    EXPECT_GT(lines.size().width(), word.size().width());
    EXPECT_LE(laidOut(u"word "_s.repeated(200)).size().width(), 300);
}

TEST(BubbleText, keepsEveryLineAtOneHeightWhateverItsScript)
{
    for (const QString& text : {u"🙂🙃👩‍👩‍👧"_s, u"你好，世界"_s, u"שלום עולם"_s, u"ท่̂̂̂̂ี"_s})
        EXPECT_EQ(laidOut(text).size().height(), lineHeight) << text.toStdString();
}

TEST(BubbleText, putsRightToLeftParagraphsAtTheRightEdge)
{
    const BubbleText mixed = laidOut(u"a much longer line in latin letters\nשלום"_s);
    const qsizetype hebrew = mixed.text().indexOf(u'\n') + 1;
    EXPECT_NEAR(mixed.caretRect(hebrew).left(), mixed.size().width(), 2);
    EXPECT_NEAR(mixed.caretRect(0).left(), 0, 1);
}

TEST(BubbleText, boundsWhatItLaysOutButKeepsTheText)
{
    const struct {
        const char* name;
        QString text;
    } hostile[] = {
        {"one word of a million letters", QString(1000000, u'w')},
        {"line breaks only", QString(1000000, u'\n')},
        {"words", u"lorem ipsum "_s.repeated(100000)},
        {"combining marks", u"e"_s + QString(1000000, QChar(0x0301))},
    };
    for (const auto& item : hostile) {
        SCOPED_TRACE(item.name);
        BubbleText text = laidOut(item.text);
        EXPECT_TRUE(text.isCut());
        EXPECT_LE(text.shownLength(), BubbleText::defaultLimit);
        EXPECT_GT(text.shownLength(), 0);
        EXPECT_EQ(text.text().size(), item.text.size());
        const qsizetype before = text.shownLength();
        text.layOut(300, 2 * BubbleText::defaultLimit);
        EXPECT_GT(text.shownLength(), before);
    }
    EXPECT_FALSE(laidOut(QString(BubbleText::defaultLimit, u'w')).isCut());
}

TEST(BubbleText, findsPositionsAndWordsUnderAPoint)
{
    const BubbleText text = laidOut(u"one two three"_s);
    for (const qsizetype position : {0, 4, 8, 13})
        EXPECT_EQ(text.positionAt(text.caretRect(position).center()), position);
    EXPECT_EQ(text.positionAt({-50, -50}), 0);
    EXPECT_EQ(text.positionAt({5000, 5000}), 13);
    EXPECT_EQ(text.selectedText(text.wordAt(5)), u"two"_s);
    EXPECT_EQ(text.selectedText(text.wordAt(4)), u"two"_s);
    EXPECT_EQ(text.selectedText(text.wordAt(13)), u"three"_s);
}

TEST(BubbleText, movesByWholeCharactersWordsAndLines)
{
    const BubbleText text = laidOut(u"a👩‍👩‍👧b next\nsecond"_s);
    const qsizetype family = u"👩‍👩‍👧"_s.size();
    EXPECT_EQ(text.nextPosition(1, false), 1 + family);
    EXPECT_EQ(text.previousPosition(1 + family, false), 1);
    const qsizetype feed = text.text().indexOf(u'\n');
    EXPECT_EQ(text.nextPosition(feed, false), feed + 1);
    EXPECT_EQ(text.previousPosition(feed + 1, false), feed);
    EXPECT_EQ(text.verticalPosition(0, 1), feed + 1);
    EXPECT_EQ(text.verticalPosition(feed + 1, -1), 0);
    EXPECT_EQ(text.verticalPosition(feed + 1, 1), text.shownLength());
    EXPECT_EQ(text.lineStart(feed + 3), feed + 1);
    EXPECT_EQ(text.lineEnd(0), feed);
    EXPECT_EQ(text.nextPosition(text.shownLength(), true), text.shownLength());
    EXPECT_EQ(text.previousPosition(0, true), 0);
}

} // namespace
} // namespace orvia
