#include "ConsoleFixture.h"

/// What the command line leads to.
namespace orvia::test {

using namespace Qt::StringLiterals;

using CommandLineTest = ConsoleTest;

TEST_F(CommandLineTest, WrongArgumentsGetOneClearLine)
{
    const QString missing = bus.directory() + "/missing.conf"_L1;
    const std::pair<QStringList, QByteArray> wrong[] = {
        {{u"--nonsense"_s}, "nonsense"},
        {{u"--config"_s}, "config"},
        {{u"--config"_s, missing}, missing.toUtf8()},
        {{u"--config"_s, bus.directory()}, bus.directory().toUtf8()},
        {{u"--config=two\nlines"_s}, "two lines"},
        {{u"conversation"_s}, "conversation"},
        {{u"orvia://conversation/a"_s, u"orvia://conversation/b"_s}, "at most one link"},
        {{u"-platform"_s, u"offscreen"_s, u"--nonsense"_s}, "nonsense"},
        {{u"-platform"_s, u"offscreen"_s, u"--config"_s, missing}, missing.toUtf8()},
    };
    ScopedEnvironment environment;
    // Complaints need no display.
    environment.unset("DISPLAY");
    for (const auto& [arguments, reason] : wrong) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, arguments.join(u' ').toStdString());
        Console console(arguments);
        EXPECT_EQ(console.exitCode(), 2);
        const QByteArray errors = console.errors();
        EXPECT_THAT(errors.toStdString(), testing::StartsWith("orvia: "));
        EXPECT_THAT(errors.toStdString(), testing::HasSubstr(reason.toStdString()));
        EXPECT_EQ(errors.count('\n'), 1);
        EXPECT_EQ(console.output(), "");
    }
}

TEST_F(CommandLineTest, ExplainsItselfWithoutADisplay)
{
    ScopedEnvironment environment;
    environment.unset("DISPLAY");
    Console help({u"--help"_s});
    EXPECT_EQ(help.exitCode(), 0);
    EXPECT_THAT(help.output().toStdString(),
                testing::AllOf(testing::HasSubstr("--config <FILE>"), testing::HasSubstr("[orvia://...]")));
    Console version({u"--version"_s});
    EXPECT_EQ(version.exitCode(), 0);
    EXPECT_THAT(version.output().toStdString(), testing::MatchesRegex("orvia [0-9.]+\n"));
    EXPECT_EQ(help.errors() + version.errors(), "");
}

} // namespace orvia::test
