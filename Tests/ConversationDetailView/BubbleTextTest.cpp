#include "Views/ConversationDetailView/Transcript/BubbleText.h"

#include "Support/Printing.h"

#include <QFont>

#include <gmock/gmock.h>

namespace orvia {
namespace {

using namespace Qt::StringLiterals;

constexpr int lineHeight = 18;

BubbleText laidOut(const QString& text)
{
    BubbleText bubble(text, {QFont(), lineHeight, Qt::AlignLeading});
    bubble.layOut(300);
    return bubble;
}

TEST(BubbleText, keepsLinesAtOneHeightAndSidesWhateverTheScript)
{
    for (const QString& text : {u"🙂🙃👩‍👩‍👧"_s, u"你好，世界"_s, u"שלום עולם"_s, u"ท่̂̂̂̂ี"_s})
        EXPECT_EQ(laidOut(text).size().height(), lineHeight) << text.toStdString();
    const BubbleText mixed = laidOut(u"a much longer line in latin letters\nשלום"_s);
    const qsizetype hebrew = mixed.text().indexOf(u'\n') + 1;
    EXPECT_NEAR(mixed.caretRect(hebrew).left(), mixed.size().width(), 2);
    EXPECT_NEAR(mixed.caretRect(0).left(), 0, 1);
    EXPECT_FALSE(laidOut(QString(BubbleText::defaultLimit, u'w')).isCut());
    EXPECT_TRUE(laidOut(QString(BubbleText::defaultLimit + 1, u'w')).isCut());
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
    EXPECT_EQ(text.positionAt({-50, -50}), 0);
    EXPECT_EQ(text.positionAt({5000, 5000}), text.shownLength());
    EXPECT_EQ(text.selectedText(text.wordAt(feed - 4)), u"next"_s);
    EXPECT_EQ(text.selectedText(text.wordAt(text.shownLength())), u"second"_s);
}

} // namespace
} // namespace orvia
