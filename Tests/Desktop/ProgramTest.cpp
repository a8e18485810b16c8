#include "Application/ConsoleFixture.h"

#include <QFile>

#include <csignal>

namespace orvia::test {
namespace {

using namespace Qt::StringLiterals;

/// The real program on a desktop that lacks something that it cannot ask for.
class BareDesktop : public ConsoleTest {
protected:
    void SetUp() override
    {
        ConsoleTest::SetUp();
        environment.set("QT_QPA_PLATFORM", "offscreen");
        signInBeforehand();
    }

    /// Whether the program comes up, shows a conversation, follows it live and ends when asked.
    void expectToWork()
    {
        service.clearJournal();
        Console console(arguments({u"orvia://conversation/helen-brandt"_s}));
        EXPECT_TRUE(waitForConversation(u"helen-brandt"_s));
        EXPECT_TRUE(waitForChannel());
        for (const QString& body : {u"👩🏽‍🚀 in space 🇩🇪"_s, u"שלום"_s, u"你好"_s})
            service.postAsVisitor(u"helen-brandt"_s, body);
        // What arrives in the open conversation is read.
        EXPECT_TRUE(waitUntil([this] {
            return std::ranges::count_if(service.frames(),
                                         [](const auto& frame) { return frame.text.contains("\"read\""); })
                   >= 3;
        }));
        EXPECT_TRUE(console.isRunning());
        console.signal(SIGTERM);
        EXPECT_EQ(console.exitCode(), 0);
    }

    ScopedEnvironment environment;
};

TEST_F(BareDesktop, NeedsNoEmojiAndHardlyAFont)
{
    for (const QByteArray directories : {"<dir>/usr/share/fonts/truetype/dejavu</dir>", ""}) {
        SCOPED_TRACE(directories.toStdString());
        QFile file(bus.directory() + "/fonts.conf"_L1);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("<?xml version='1.0'?><fontconfig>" + directories + "<cachedir>" + bus.directory().toUtf8()
                   + "/fonts</cachedir></fontconfig>");
        file.close();
        environment.set("FONTCONFIG_FILE", QFile::encodeName(file.fileName()));
        expectToWork();
    }
}

TEST_F(BareDesktop, NeedsNoPlaceToWrite)
{
    // The token is still read where it was; nothing else can be made in the home.
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        environment.set(variable, "/proc/nowhere");
    expectToWork();
}

} // namespace
} // namespace orvia::test
