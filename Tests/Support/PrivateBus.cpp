#include "Support/PrivateBus.h"

#include <QDir>
#include <QFile>

#include <csignal>
#include <sys/prctl.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

ChildProcess::ChildProcess()
{
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

ChildProcess::~ChildProcess()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.terminate();
    if (!m_process.waitForFinished(5000))
        kill();
}

void ChildProcess::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

ScopedEnvironment::~ScopedEnvironment()
{
    while (!m_saved.isEmpty()) {
        const Saved saved = m_saved.takeLast();
        if (saved.wasSet)
            qputenv(saved.name.constData(), saved.value);
        else
            qunsetenv(saved.name.constData());
    }
}

void ScopedEnvironment::remember(const QByteArray& name)
{
    m_saved.append({name, qgetenv(name.constData()), qEnvironmentVariableIsSet(name.constData())});
}

void ScopedEnvironment::set(const QByteArray& name, const QByteArray& value)
{
    remember(name);
    qputenv(name.constData(), value);
}

void ScopedEnvironment::unset(const QByteArray& name)
{
    remember(name);
    qunsetenv(name.constData());
}

PrivateBus::PrivateBus()
{
    const QDir directory(m_directory.path());
    const std::pair<const char*, QString> variables[] = {
        {"HOME", u"home"_s},
        {"XDG_DATA_HOME", u"data"_s},
        {"XDG_CONFIG_HOME", u"config"_s},
        {"XDG_CACHE_HOME", u"cache"_s},
        {"XDG_STATE_HOME", u"state"_s},
        {"XDG_RUNTIME_DIR", u"runtime"_s},
    };
    for (const auto& [variable, name] : variables) {
        directory.mkdir(name);
        m_environment.set(variable, QFile::encodeName(directory.filePath(name)));
    }
    QFile::setPermissions(directory.filePath(u"runtime"_s),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    directory.mkdir(u"services"_s);

    QFile configuration(directory.filePath(u"bus.conf"_s));
    if (!configuration.open(QIODevice::WriteOnly))
        return;
    configuration.write(
        u"<busconfig><type>session</type><listen>unix:path=%1/bus</listen><auth>EXTERNAL</auth>"
        "<servicedir>%1/services</servicedir><policy context=\"default\"><allow send_destination=\"*\" "
        "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>"_s
            .arg(m_directory.path())
            .toUtf8());
    configuration.close();

    QProcess& daemon = m_daemon.process();
    daemon.start(u"dbus-daemon"_s,
                 {u"--nofork"_s, u"--print-address"_s, u"--config-file=%1"_s.arg(configuration.fileName())});
    while (!daemon.canReadLine() && daemon.waitForReadyRead(10000)) {
    }
    m_address = QString::fromLatin1(daemon.readLine()).trimmed();
    m_environment.set("DBUS_SESSION_BUS_ADDRESS", m_address.toLatin1());
}

PrivateBus::~PrivateBus() = default;

bool PrivateBus::isRunning() const
{
    return !m_address.isEmpty();
}

void PrivateBus::addService(const QString& name, const QString& commandLine)
{
    QFile file(m_directory.filePath(u"services/%1.service"_s.arg(name)));
    if (file.open(QIODevice::WriteOnly))
        file.write(u"[D-BUS Service]\nName=%1\nExec=%2\n"_s.arg(name, commandLine).toUtf8());
}

void PrivateBus::kill()
{
    m_daemon.kill();
}

} // namespace orvia::test
