#include "APIClient/APIClient.h"
#include "APIClient/NetworkSession.h"
#include "Support/PrivateBus.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>

#include <csignal>

namespace orvia::test {

using namespace Qt::StringLiterals;

namespace {

/// The real program, started with @p arguments and ended with the test.
struct Program {
    explicit Program(const QStringList& arguments)
    {
        process.start(QStringLiteral(ORVIA_DEMO_PROGRAM), arguments);
        process.waitForStarted();
    }

    /// The address in the first line, or an empty URL when the program ends without one.
    QUrl origin()
    {
        EXPECT_TRUE(
            waitUntil([this] { return process.canReadLine() || process.state() == QProcess::NotRunning; }));
        const QString line = QString::fromUtf8(process.readLine()).trimmed();
        const QString start = u"Orvia demo service at "_s;
        return line.startsWith(start) ? QUrl(line.mid(start.size())) : QUrl();
    }

    /// Waits for the end; the exit code, or -1 for a crash.
    int exitCode()
    {
        EXPECT_TRUE(waitUntil([this] { return process.state() == QProcess::NotRunning; }));
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    ChildProcess child;
    QProcess& process = child.process();
};

} // namespace

TEST(ProgramTest, ServesOnAPortOfItsOwnUntilASignalEndsIt)
{
    NetworkSession session;
    for (const int signal : {SIGTERM, SIGINT}) {
        Program program({u"--quiet"_s, u"--conversations"_s, u"30"_s, u"--messages"_s, u"12"_s});
        const QUrl origin = program.origin();
        ASSERT_FALSE(origin.isEmpty());
        const APIClient anonymous(origin, std::nullopt, &session);
        const auto login = runTask(anonymous.login(u"mara@tessaly.example"_s, u"demo"_s));
        ASSERT_TRUE(login.value) << login.errorMessage().toStdString();
        const APIClient client(origin, login.value->token, &session);
        EXPECT_EQ(runTask(client.conversations({}, {}, {}, true)).value->size(), 56U);
        EXPECT_EQ(runTask(client.conversationDetail(u"load-1"_s)).value->messages.wrappedValue.size(), 12U);

        Program second({u"--port"_s, QString::number(origin.port())});
        EXPECT_EQ(second.exitCode(), 1);
        EXPECT_TRUE(second.process.readAllStandardError().contains("is not free"));

        ::kill(static_cast<pid_t>(program.process.processId()), signal);
        EXPECT_EQ(program.exitCode(), 0);
        EXPECT_EQ(program.process.readAllStandardError(), "");
    }
}

TEST(ProgramTest, WrongArgumentsGetOneClearLine)
{
    for (const char* arguments : {"--port 65536", "--port x", "--port", "--seed -1", "--nonsense",
                                  "somewhere", "--conversations 1e9", "--events-per-second 2.5"}) {
        Program program(QString::fromLatin1(arguments).split(u' '));
        EXPECT_EQ(program.exitCode(), 2) << arguments;
        const QByteArray errors = program.process.readAllStandardError();
        EXPECT_TRUE(errors.startsWith("orvia-demo-service: ") && errors.count('\n') == 1)
            << errors.toStdString();
        EXPECT_EQ(program.process.readAllStandardOutput(), "");
    }
}

} // namespace orvia::test
