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
class Program {
public:
    explicit Program(const QStringList& arguments)
    {
        m_child.process().start(QStringLiteral(ORVIA_DEMO_PROGRAM), arguments);
        m_child.process().waitForStarted();
    }

    /// The address in the first line, or an empty URL when the program ends without one.
    QUrl origin()
    {
        EXPECT_TRUE(waitUntil([this] { return m_child.process().canReadLine() || !isRunning(); }));
        const QString line = QString::fromUtf8(m_child.process().readLine()).trimmed();
        const QString start = u"Orvia demo service at "_s;
        return line.startsWith(start) ? QUrl(line.mid(start.size())) : QUrl();
    }

    void signal(int number) { ::kill(static_cast<pid_t>(m_child.process().processId()), number); }

    /// Waits for the end; the exit code, or -1 for a crash.
    int exitCode()
    {
        EXPECT_TRUE(waitUntil([this] { return !isRunning(); }));
        return m_child.process().exitStatus() == QProcess::NormalExit ? m_child.process().exitCode() : -1;
    }

    QByteArray errors() { return m_child.process().readAllStandardError(); }
    QByteArray output() { return m_child.process().readAllStandardOutput(); }

private:
    bool isRunning() { return m_child.process().state() != QProcess::NotRunning; }

    ChildProcess m_child;
};

} // namespace

TEST(ProgramTest, ServesUntilASignalEndsIt)
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
        program.signal(signal);
        EXPECT_EQ(program.exitCode(), 0);
        EXPECT_EQ(program.errors(), "");
    }
}

TEST(ProgramTest, TwoServicesCannotShareAPort)
{
    Program first({u"--quiet"_s});
    const QUrl origin = first.origin();
    ASSERT_FALSE(origin.isEmpty());
    Program second({u"--port"_s, QString::number(origin.port())});
    EXPECT_EQ(second.exitCode(), 1);
    EXPECT_TRUE(second.errors().contains("is not free"));
}

TEST(ProgramTest, WrongArgumentsGetOneClearLine)
{
    const QList<QStringList> wrong{{u"--port"_s, u"65536"_s},
                                   {u"--port"_s, u"x"_s},
                                   {u"--port"_s},
                                   {u"--seed"_s, u"-1"_s},
                                   {u"--nonsense"_s},
                                   {u"somewhere"_s},
                                   {u"--conversations"_s, u"1e9"_s},
                                   {u"--events-per-second"_s, u"2.5"_s}};
    for (const QStringList& arguments : wrong) {
        Program program(arguments);
        EXPECT_EQ(program.exitCode(), 2) << arguments.join(u' ').toStdString();
        const QByteArray errors = program.errors();
        EXPECT_EQ(errors.count('\n'), 1) << errors.toStdString();
        EXPECT_TRUE(errors.startsWith("orvia-demo-service: ")) << errors.toStdString();
        EXPECT_EQ(program.output(), "");
    }
}

} // namespace orvia::test
