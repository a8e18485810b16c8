#include "ComposerLogic/MentionComposer.h"

#include <gmock/gmock.h>

namespace orvia {
namespace {

using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

Agent agent(const QString& id, const QString& name)
{
    Agent made;
    made.id = id;
    made.name = name;
    return made;
}

std::vector<QString> ids(const std::vector<Agent>& agents)
{
    std::vector<QString> found;
    for (const Agent& one : agents)
        found.push_back(one.id);
    return found;
}

TEST(MentionQuery, IsWhatFollowsTheLastMark)
{
    const auto query = [](const QString& text) { return MentionComposer::query(text, true); };
    for (const QString& blank :
         {u""_s, u"Hi "_s, u"@Ann hi "_s, u"\t"_s, u"\u3000"_s, u"\u0085"_s, u"x\r\n"_s})
        EXPECT_EQ(query(blank + u"@Ann Le"_s), u"Ann Le"_s) << qPrintable(blank);
    EXPECT_EQ(query(u"Hi @"_s), u""_s);
    // A no-break space is no plain space and does not count.
    EXPECT_EQ(query(u"@a\u00A0b c"_s), u"a\u00A0b c"_s);
    // Marks make another character of the sign and of the space.
    EXPECT_EQ(query(u"@Ann @\u0301x"_s), u"Ann @\u0301x"_s);
    EXPECT_EQ(query(u"@a \u0301b c"_s), u"a \u0301b c"_s);
    for (const QString& text : {u"Hi @Ann Lee x"_s, u"Hi @Ann  "_s, u"a@b"_s, u"no mark"_s, u""_s,
                                u"\u200B@b"_s, u"@\u0301x"_s, u"@@"_s})
        EXPECT_EQ(query(text), std::nullopt) << qPrintable(text);
    for (const QChar lineBreak : u"\n\v\f\r\u0085\u2028\u2029"_s)
        EXPECT_EQ(query(u"@Ann"_s + lineBreak + u'x'), std::nullopt) << static_cast<int>(lineBreak.unicode());
    EXPECT_EQ(MentionComposer::query(u"Hi @an"_s, false), std::nullopt) << "a reply mentions nobody";
}

TEST(Mentions, AreWholeNames)
{
    using Pairs = std::vector<std::pair<QString, QString>>;
    const Pairs mentioned{{u"hi @Ann!"_s, u"Ann"_s},
                          {u"@Anna and @Ann"_s, u"Ann"_s},
                          {u"@Ann\U0001F600"_s, u"Ann"_s},
                          {u"x@Ann_"_s, u"Ann"_s},
                          {u"@Ann Lee x"_s, u"Ann Lee"_s},
                          {u"@Jose\u0301 x"_s, u"Jos\u00E9"_s},
                          {u"@q\u0307\u0323."_s, u"q\u0323\u0307"_s}, // the order of marks is not significant
                          // Two occurrences are followed by a letter; the search goes on behind them.
                          {u"@ab@abc@ab."_s, u"ab"_s}};
    for (const auto& [text, name] : mentioned)
        EXPECT_TRUE(MentionComposer::mentions(text, name)) << qPrintable(text);
    const Pairs others{
        {u"hi @Anna"_s, u"Ann"_s},       {u"@Ann\u00BD"_s, u"Ann"_s},
        {u"@Ann\U0001D400"_s, u"Ann"_s}, // a letter beyond the basic plane
        {u"@ann"_s, u"Ann"_s},           {u"@"_s, u""_s},
        {u"@Jose\u0301"_s, u"Jose"_s}, // ends within a character
        {u"@\u0301Ann"_s, u"Ann"_s},     {u"@Bo\U0001F1E9\U0001F1EA"_s, u"Bo\U0001F1E9"_s}}; // half a flag
    for (const auto& [text, name] : others)
        EXPECT_FALSE(MentionComposer::mentions(text, name)) << qPrintable(text);
}

TEST(Mentions, AreInsertedForThePartialNameAndSentWhileTheyRemain)
{
    const Agent ann = agent(u"1"_s, u"Ann"_s);
    EXPECT_EQ(MentionComposer::inserting(ann, u"Thanks @an"_s), u"Thanks @Ann "_s);
    EXPECT_EQ(MentionComposer::inserting(ann, u"no mention"_s), u"no mention"_s);
    EXPECT_EQ(MentionComposer::inserting(ann, u"@Bo @a\u0301 @\u0301"_s), u"@Bo @Ann "_s);
    const std::vector<Agent> picked{agent(u"2"_s, u"Bo"_s), ann};
    EXPECT_EQ(MentionComposer::sendableIds(picked, u"Thanks @Ann "_s), QStringList{u"1"_s});
    EXPECT_EQ(MentionComposer::sendableIds(picked, u"@Ann @Bo"_s), (QStringList{u"2"_s, u"1"_s}));
}

TEST(MentionSuggestions, ContainTheTypedText)
{
    const std::vector<Agent> team{agent(u"0"_s, u"Me An"_s),      agent(u"1"_s, u"Joanna"_s),
                                  agent(u"2"_s, u"Bo"_s),         agent(u"3"_s, u"\u0130rfan"_s),
                                  agent(u"4"_s, u"Jose\u0301"_s), agent(u"5"_s, u"ΟΔΥΣΣΕΥΣ"_s),
                                  agent(u"6"_s, u"Ana"_s),        agent(u"7"_s, u"Zoe"_s)};
    const auto offered = [&team](const QString& text) {
        return ids(MentionComposer::matches(team, u"0"_s, text, true));
    };
    EXPECT_THAT(offered(u"@\tAN "_s), ElementsAre(u"1"_s, u"3"_s, u"6"_s));
    EXPECT_THAT(offered(u"@ "_s), ElementsAre(u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s));
    EXPECT_THAT(offered(u"@JOS\u00C9"_s), ElementsAre(u"4"_s));
    EXPECT_THAT(offered(u"@jose"_s), IsEmpty()) << "e with its accent is another character";
    EXPECT_THAT(offered(u"@οδυσσευς"_s), ElementsAre(u"5"_s));
    EXPECT_THAT(offered(u"@Joanna @an"_s), ElementsAre(u"3"_s, u"6"_s)) << "the mentioned are left out";
    EXPECT_THAT(offered(u"nothing"_s), IsEmpty());
}

TEST(MentionSuggestions, StayCheapInLongDrafts)
{
    std::vector<Agent> team;
    for (int i = 0; i < 200; ++i)
        team.push_back(agent(QString::number(i), u"Agent %1"_s.arg(i)));
    const QString marks = u"@\u0301"_s.repeated(10'000);
    EXPECT_EQ(MentionComposer::query(u"@a"_s + marks, true), u"a"_s + marks);
    const QString draft = u"@Agent 199 and "_s + u"word @"_s.repeated(2'000);
    EXPECT_THAT(ids(MentionComposer::matches(team, std::nullopt, draft + u"T 19"_s, true)),
                ElementsAre(u"19"_s, u"190"_s, u"191"_s, u"192"_s, u"193"_s, u"194"_s));
}

} // namespace
} // namespace orvia
