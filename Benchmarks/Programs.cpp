#include "Benchmarks/Programs.h"

#include "APIClient/APIClient.h"
#include "APIClient/NetworkSession.h"
#include "AppIdentity.h"
#include "Keychain/Keychain.h"
#include "Session/DefaultsStore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QThread>

#include <cstdlib>

namespace orvia::bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int longestWait = 60'000; // milliseconds
constexpr int settlingTime = 200;   // milliseconds
const QString tokenAccount = u"agentToken"_s;
const QString identityKey = u"cachedIdentity"_s;

/// Asks for @p path and reads the answer to its end; answers whether it was a success.
bool dropAnswer(const QUrl& origin, const QString& path, const QString& token)
{
    QTcpSocket socket;
    socket.connectToHost(origin.host(), static_cast<quint16>(origin.port()));
    if (!socket.waitForConnected(longestWait))
        return false;
    socket.write(u"GET %1 HTTP/1.1\r\nHost: %2\r\nAuthorization: Bearer %3\r\nConnection: close\r\n\r\n"_s
                     .arg(path, origin.authority(), token)
                     .toLatin1());
    QByteArray head;
    qint64 missing = -1;
    while (missing != 0 && socket.waitForReadyRead(longestWait)) {
        const QByteArray bytes = socket.readAll();
        if (missing > 0) {
            missing -= bytes.size();
            continue;
        }
        head += bytes;
        const qsizetype headEnd = head.indexOf("\r\n\r\n");
        if (headEnd < 0)
            continue;
        static const QRegularExpression length(u"content-length: *([0-9]+)"_s,
                                               QRegularExpression::CaseInsensitiveOption);
        const QString fields = QString::fromLatin1(head.left(headEnd));
        missing = length.match(fields).captured(1).toLongLong() - (head.size() - headEnd - 4);
    }
    return missing == 0 && head.startsWith("HTTP/1.1 200");
}

} // namespace

QString programPath(const QString& name)
{
    return QCoreApplication::applicationDirPath() + u'/' + name;
}

ServiceProcess::ServiceProcess(const QStringList& arguments)
{
    QProcess& process = m_process.process();
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(programPath(u"orvia-demo-service"_s), QStringList{u"--port"_s, u"0"_s} + arguments);
    while (!process.canReadLine() && process.waitForReadyRead(longestWait)) {
    }
    m_origin = QUrl(QString::fromUtf8(process.readLine()).trimmed().section(u' ', -1));
    if (!m_origin.isValid() || m_origin.port() <= 0)
        std::abort();
}

QString ServiceProcess::signIn() const
{
    NetworkSession network;
    const APIClient client(m_origin, std::nullopt, &network);
    return QCoro::waitFor(client.login(u"mara@tessaly.example"_s, u"demo"_s)).token;
}

double ServiceProcess::millisecondsFor(const QStringList& paths, const QString& token) const
{
    QElapsedTimer timer;
    timer.start();
    for (const QString& path : paths) {
        if (!dropAnswer(m_origin, path, token))
            std::abort();
    }
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

WindowProcess::WindowProcess(const VirtualDisplay& display, const QString& program,
                             const QStringList& arguments)
    : m_display(display)
{
    QProcess& process = m_process.process();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, display.name());
    environment.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    environment.remove(u"WAYLAND_DISPLAY"_s);
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // What ran before is still being taken down, by the display and the bus among others.
    QThread::msleep(settlingTime);
    process.start(programPath(program), arguments);
}

/// The next program must not be taken for painted because of what this one left.
WindowProcess::~WindowProcess()
{
    m_process.process().terminate();
    m_process.process().waitForFinished(longestWait);
    m_display.millisecondsUntil([](const QImage& picture) { return edges(picture, picture.rect()) == 0; });
}

Stage::Stage() = default;

QStringList Stage::signedOut(const ServiceProcess& service)
{
    Keychain(AppIdentity::identifier).set(std::nullopt, tokenAccount);
    DefaultsStore defaults;
    if (const auto identity = defaults.data(identityKey))
        m_identity = identity;
    defaults.remove(identityKey);
    return arguments(service);
}

QStringList Stage::arguments(const ServiceProcess& service) const
{
    const QString configuration = m_bus.directory() + u"/orvia.conf"_s;
    QFile file(configuration);
    if (!file.open(QIODevice::WriteOnly))
        std::abort();
    file.write(u"APIBaseURL=%1\n"_s.arg(service.origin().toString()).toUtf8());
    return {u"--config"_s, configuration};
}

QStringList Stage::signedIn(const ServiceProcess& service, const QString& token)
{
    if (m_identity)
        DefaultsStore().setData(*m_identity, identityKey);
    if (!Keychain(AppIdentity::identifier).set(token, tokenAccount))
        std::abort();
    return arguments(service);
}

} // namespace orvia::bench
