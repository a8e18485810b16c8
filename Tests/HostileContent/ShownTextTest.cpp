#include "Platform/ShownText.h"
#include "Support/Printing.h"

#include <gmock/gmock.h>

namespace orvia::test {
namespace {

using namespace Qt::StringLiterals;

TEST(ShownText, IsOneLineWithoutWhatTurnsOrHidesTheRest)
{
    const struct {
        QString text;
        QString line;
    } cases[] = {
        {u" two\r\nlines\tand\u2028<b>markup</b>\u2029&amp; "_s, u"two lines and <b>markup</b> &amp;"_s},
        {u"photo\u202Egnp.exe \u202A\u202B\u202C\u202D\u2066\u2067\u2068Dana\u2069"_s,
         u"photognp.exe Dana"_s},
        {u"a\u0000b\u0007c\u0085d\u009Fe\u007F"_s, u"abc de"_s},
        {QString(19'000, u'\u200B') + u"seen"_s, u"seen"_s},
        {u"\uFEFF\u2060\u00ADco\u00ADop\u3164"_s, u"coop"_s},
        {QString(QChar(0xD800)) + u"half"_s, u"half"_s},
        {u"Z"_s + QString(5'000, u'\u0301') + u"algo"_s, u"Z"_s + QString(4, u'\u0301') + u"algo"_s},
        // What languages need stays: marks, joiners, direction marks, emoji sequences, flags of regions.
        {u"שָׁלוֹם עולם"_s, u"שָׁלוֹם עולם"_s},
        {u"نمی\u200Cخواهم \u200F(C++)\u200F"_s, u"نمی\u200Cخواهم \u200F(C++)\u200F"_s},
        {u"🏴\U000E0067\U000E0062\U000E0065\U000E006E\U000E0067\U000E007F"_s,
         u"🏴\U000E0067\U000E0062\U000E0065\U000E006E\U000E0067\U000E007F"_s},
        {u"\u0600١٢"_s, u"\u0600١٢"_s},
    };
    for (const auto& one : cases)
        EXPECT_EQ(shownLine(one.text), one.line) << one.text.left(60).toStdString();
}

TEST(ShownText, IsCutBetweenCharactersAndSaysSo)
{
    for (const QString& character : {u"x"_s, u"😀"_s, u"👩‍🚀"_s, u"e\u0301"_s}) {
        const QString line = shownLine(character.repeated(50'000));
        EXPECT_LE(line.size(), longestShownLine);
        EXPECT_TRUE(line.endsWith(u'…'));
        EXPECT_TRUE(line.chopped(1).size() % character.size() == 0) << character.toStdString();
        EXPECT_EQ(shownLine(character.repeated(20)), character.repeated(20));
    }
    EXPECT_EQ(shownLine(QString(100'000, u'\u200B')), u"…"_s) << "nothing seen, but something there";
    EXPECT_EQ(shownLine(u"abcdef"_s, 6), u"abcdef"_s);
    EXPECT_EQ(shownLine(u"abcdefg"_s, 6), u"abcde…"_s);
}

TEST(ShownText, ShowsWhatKindOfFileItIs)
{
    EXPECT_EQ(shownFileName(u"photo\u202Egnp.exe"_s), u"photognp.exe"_s);
    for (const QString& stuffing :
         {QString(100'000, u'x'), u" "_s.repeated(5'000), QString(9'000, u'\u200B')}) {
        const QString shown = shownFileName(u"photo.png"_s + stuffing + u".exe"_s);
        EXPECT_LE(shown.size(), longestShownLine);
        EXPECT_TRUE(shown.startsWith("photo.png"_L1) && shown.endsWith(".exe"_L1)) << shown.toStdString();
    }
}

TEST(ShownText, KeepsPositionsOfParagraphs)
{
    const QString text = u"to\u202Eedoc\tNUL\u0000\u0085 \u2067שלום\u2069 \u200E"_s;
    const QString shown = shownParagraph(text);
    ASSERT_EQ(shown.size(), text.size());
    for (qsizetype i = 0; i < text.size(); ++i)
        EXPECT_EQ(shown[i], i == 2 || i == 11 || i == 12 || i == 14 || i == 19 ? QChar(u'\u2060') : text[i])
            << i;
}

} // namespace
} // namespace orvia::test
