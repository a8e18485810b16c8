#include "ConsoleFixture.h"

#include "AppIdentity.h"
#include "Platform/PrivateFile.h"

#include <csignal>

namespace orvia::test {

using namespace Qt::StringLiterals;

Console::Console(const QStringList& arguments)
{
    m_child.process().start(QStringLiteral(ORVIA_PROGRAM), arguments);
    m_child.process().waitForStarted();
}

void Console::signal(int number)
{
    ::kill(static_cast<pid_t>(m_child.process().processId()), number);
}

int Console::exitCode()
{
    EXPECT_TRUE(waitUntil([this] { return !isRunning(); })) << "the program goes on";
    return !isRunning() && m_child.process().exitStatus() == QProcess::NormalExit
               ? m_child.process().exitCode()
               : -1;
}

void ConsoleTest::SetUp()
{
    ASSERT_TRUE(bus.isRunning());
    ASSERT_TRUE(service.listen());
}

QStringList ConsoleTest::arguments(const QStringList& more) const
{
    const QString file = bus.directory() + "/console.conf"_L1;
    PrivateFile(file).write("APIBaseURL=" + service.origin().toEncoded() + '\n');
    return QStringList{u"--config"_s, file} + more;
}

void ConsoleTest::signInBeforehand()
{
    PrivateFileStorage storage(bus.dataHome() + "/orvia/keychain"_L1);
    ASSERT_EQ(storage.add(service.tokenOf(u"mara"_s).toUtf8(), AppIdentity::identifier, u"agentToken"_s),
              SecretStatus::success);
}

qsizetype ConsoleTest::timesAsked(const QString& path) const
{
    return std::ranges::count(service.requests(), path, &demo::Request::path);
}

bool ConsoleTest::waitForRequest(const QString& path) const
{
    return waitUntil([&] { return timesAsked(path) > 0; });
}

bool ConsoleTest::waitForConversation(const QString& id) const
{
    return waitForRequest("/v1/agent/conversations/"_L1 + id);
}

bool ConsoleTest::waitForChannel() const
{
    return waitUntil([this] { return !service.frames().empty(); });
}

} // namespace orvia::test
