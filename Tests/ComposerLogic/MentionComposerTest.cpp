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
    struct Case {
        QString text;
        std::optional<QString> query;
    };
    const std::vector<Case> cases{
        {u"Hi @"_s, u""_s},
        {u"Hi @an"_s, u"an"_s},
        {u"Hi @Ann Le"_s, u"Ann Le"_s},
        {u"Hi @Ann Lee x"_s, std::nullopt},
        {u"Hi @Ann  "_s, std::nullopt},
        {u"@b"_s, u"b"_s},
        {u"@Ann hi @Bo"_s, u"Bo"_s},
        {u"a@b"_s, std::nullopt},
        {u"no mark"_s, std::nullopt},
        {u""_s, std::nullopt},
        {u"\t@b"_s, u"b"_s},
        {u"\u00A0@b"_s, u"b"_s},
        {u"\u3000@b"_s, u"b"_s},
        {u"\u0085@b"_s, u"b"_s},
        {u"x\r\n@b"_s, u"b"_s},
        {u"\u200B@b"_s, std::nullopt},
        // A no-break space is no plain space and does not count.
        {u"@a\u00A0b c"_s, u"a\u00A0b c"_s},
        // Marks make another character of the sign and of the space.
        {u"@Ann @\u0301x"_s, u"Ann @\u0301x"_s},
        {u"@a \u0301b c"_s, u"a \u0301b c"_s},
        {u"@\u0301x"_s, std::nullopt},
        {u"@@"_s, std::nullopt},
    };
    for (const Case& tried : cases) {
        EXPECT_EQ(MentionComposer::query(tried.text, true), tried.query) << qPrintable(tried.text);
        EXPECT_EQ(MentionComposer::query(tried.text, false), std::nullopt);
    }
}

TEST(MentionQuery, EndsAtEveryLineBreak)
{
    for (const QString& lineBreak :
         {u"\n"_s, u"\v"_s, u"\f"_s, u"\r"_s, u"\r\n"_s, u"\u0085"_s, u"\u2028"_s, u"\u2029"_s})
        EXPECT_EQ(MentionComposer::query(u"@Ann"_s + lineBreak + u"x"_s, true), std::nullopt);
}

TEST(Mentions, AreWholeNames)
{
    struct Case {
        QString text;
        QString name;
        bool mentioned;
    };
    const std::vector<Case> cases{
        {u"hi @Ann!"_s, u"Ann"_s, true},
        {u"hi @Ann"_s, u"Ann"_s, true},
        {u"hi @Anna"_s, u"Ann"_s, false},
        {u"@Anna and @Ann"_s, u"Ann"_s, true},
        {u"@Ann1"_s, u"Ann"_s, false},
        {u"@Ann\u00BD"_s, u"Ann"_s, false},
        {u"@Ann\U0001D400"_s, u"Ann"_s, false}, // a letter beyond the basic plane
        {u"@Ann\U0001D7D8"_s, u"Ann"_s, false}, // a digit there
        {u"@Ann\U0001F600"_s, u"Ann"_s, true},
        {u"@Ann_"_s, u"Ann"_s, true},
        {u"@ann"_s, u"Ann"_s, false},
        {u"x@Ann"_s, u"Ann"_s, true},
        {u"@Ann Lee x"_s, u"Ann Lee"_s, true},
        {u"@"_s, u""_s, false},
        {u"@Jose\u0301 x"_s, u"Jos\u00E9"_s, true},
        {u"@Jos\u00E9"_s, u"Jose\u0301"_s, true},
        {u"@Jose\u0301"_s, u"Jose"_s, false}, // ends within a character
        {u"@\u0301Ann"_s, u"Ann"_s, false},
        {u"@q\u0307\u0323."_s, u"q\u0323\u0307"_s, true}, // the order of marks is not significant
        {u"@A\u212B"_s, u"A\u00C5"_s, true},
        // Each occurrence is followed by a letter; the search goes on behind it.
        {u"@ab@abc@ab."_s, u"ab"_s, true},
        {u"@Bo\U0001F1E9\U0001F1EA"_s, u"Bo\U0001F1E9"_s, false}, // half a flag
    };
    for (const Case& tried : cases)
        EXPECT_EQ(MentionComposer::mentions(tried.text, tried.name), tried.mentioned)
            << qPrintable(tried.text) << " / " << qPrintable(tried.name);
}

TEST(MentionCandidates, LeaveOutOneselfAndTheMentioned)
{
    const std::vector<Agent> team{agent(u"1"_s, u"Ann"_s), agent(u"2"_s, u"Bo"_s), agent(u"3"_s, u""_s),
                                  agent(u"4"_s, u"Cy"_s)};
    EXPECT_THAT(ids(MentionComposer::candidates(team, u"4"_s, u"@ @Bo."_s)), ElementsAre(u"1"_s, u"3"_s));
    EXPECT_THAT(ids(MentionComposer::candidates(team, std::nullopt, u""_s)),
                ElementsAre(u"1"_s, u"2"_s, u"3"_s, u"4"_s));
}

TEST(MentionInsertion, ReplacesThePartialName)
{
    const Agent ann = agent(u"1"_s, u"Ann"_s);
    EXPECT_EQ(MentionComposer::inserting(ann, u"Thanks @an"_s), u"Thanks @Ann "_s);
    EXPECT_EQ(MentionComposer::inserting(ann, u"no mention"_s), u"no mention"_s);
    EXPECT_EQ(MentionComposer::inserting(ann, u"@Bo @a\u0301 @\u0301"_s), u"@Bo @Ann "_s);
}

TEST(SendableIds, AreThePickedThatRemain)
{
    const std::vector<Agent> picked{agent(u"2"_s, u"Bo"_s), agent(u"1"_s, u"Ann"_s)};
    EXPECT_EQ(MentionComposer::sendableIds(picked, u"Thanks @Ann "_s), QStringList{u"1"_s});
    EXPECT_EQ(MentionComposer::sendableIds(picked, u"@Ann @Bo"_s), (QStringList{u"2"_s, u"1"_s}));
    EXPECT_THAT(MentionComposer::sendableIds({}, u"@Ann"_s), IsEmpty());
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
    EXPECT_THAT(offered(u"@jose"_s), IsEmpty()); // e with its accent is another character
    EXPECT_THAT(offered(u"@οδυσ"_s), ElementsAre(u"5"_s));
    EXPECT_THAT(offered(u"@οδυσσευς"_s), ElementsAre(u"5"_s));
    EXPECT_THAT(offered(u"@Joanna @an"_s), ElementsAre(u"3"_s, u"6"_s));
    EXPECT_THAT(offered(u"nothing"_s), IsEmpty());
    EXPECT_THAT(ids(MentionComposer::matches(team, u"0"_s, u"@an"_s, false)), IsEmpty());
}

TEST(MentionSuggestions, StayCheapInLongDrafts)
{
    std::vector<Agent> team;
    for (int i = 0; i < 200; ++i)
        team.push_back(agent(QString::number(i), u"Agent %1"_s.arg(i)));
    const QString marks = u"@\u0301"_s.repeated(10'000);
    EXPECT_EQ(MentionComposer::query(u"@a"_s + marks, true), u"a"_s + marks);
    const QString draft = u"@Agent 199 and "_s + u"word @"_s.repeated(2'000);
    EXPECT_THAT(ids(MentionComposer::matches(team, std::nullopt, draft + u"199"_s, true)), IsEmpty());
    EXPECT_THAT(ids(MentionComposer::matches(team, std::nullopt, draft + u"T 19"_s, true)),
                ElementsAre(u"19"_s, u"190"_s, u"191"_s, u"192"_s, u"193"_s, u"194"_s));
    EXPECT_EQ(MentionComposer::candidates(team, std::nullopt, draft).size(), 199U);
}

} // namespace
} // namespace orvia
