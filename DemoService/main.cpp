#include "DemoService/DemoService.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <limits>
#include <optional>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

using namespace Qt::StringLiterals;

constexpr int usageError = 2;

struct NumberOption {
    QCommandLineOption option;
    qint64 highest;
};

/// Answers SIGTERM and SIGINT by leaving the event loop, in the loop itself and not inside a signal handler.
void quitOnSignals(QCoreApplication& application)
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    const int descriptor = signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC);
    if (descriptor < 0)
        return;
    auto* const notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, &application);
    QObject::connect(notifier, &QSocketNotifier::activated, &application, [descriptor] {
        signalfd_siginfo information;
        if (read(descriptor, &information, sizeof information) == sizeof information)
            QCoreApplication::exit(0);
    });
}

/// The value of the option, or none when it is not a number in its range.
std::optional<qint64> number(const QCommandLineParser& parser, const NumberOption& entry)
{
    bool isNumber = false;
    const qint64 value = parser.value(entry.option).toLongLong(&isNumber);
    if (isNumber && value >= 0 && value <= entry.highest)
        return value;
    return std::nullopt;
}

int refuse(const QString& reason)
{
    std::fprintf(stderr, "orvia-demo-service: %s\n", qPrintable(reason));
    return usageError;
}

void printAccounts(orvia::demo::DemoService& service)
{
    std::printf("Orvia demo service at %s\n", qPrintable(service.origin().toString()));
    std::printf("Accounts, all with the password \"%s\":\n",
                qPrintable(orvia::demo::DemoService::password()));
    for (const auto& account : service.store().accounts()) {
        std::printf("  %s%s\n", qPrintable(account->agent.email),
                    account->isAdmin() ? " (administrator)" : "");
    }
    // Whoever started the service may be reading from a pipe.
    std::fflush(stdout);
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"orvia-demo-service"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(ORVIA_VERSION));
    quitOnSignals(application);

    const NumberOption port{
        {u"port"_s, u"Listen on this port of 127.0.0.1; 0 takes a free one."_s, u"N"_s, u"0"_s}, 65535};
    const NumberOption seed{{u"seed"_s, u"What is random follows from this number."_s, u"N"_s, u"1"_s},
                            std::numeric_limits<qint64>::max()};
    const NumberOption conversations{
        {u"conversations"_s, u"Add this many generated conversations."_s, u"N"_s, u"0"_s}, 1'000'000};
    const NumberOption messages{
        {u"messages"_s,
         u"Messages in the first generated conversation (load-1); the others have up to three."_s, u"N"_s,
         u"0"_s},
        1'000'000};
    const NumberOption events{
        {u"events-per-second"_s, u"Send this many generated events per second."_s, u"N"_s, u"0"_s}, 100'000};
    const QCommandLineOption quiet(u"quiet"_s, u"No visitor and no teammate acts by itself."_s);

    QCommandLineParser parser;
    parser.setApplicationDescription(u"An in-memory live-chat service to try Orvia with."_s);
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions(
        {port.option, seed.option, quiet, conversations.option, messages.option, events.option});
    if (!parser.parse(application.arguments()))
        return refuse(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();
    if (!parser.positionalArguments().isEmpty())
        return refuse(u"Unexpected argument: %1"_s.arg(parser.positionalArguments().first()));
    for (const NumberOption& entry : {port, seed, conversations, messages, events}) {
        if (!number(parser, entry))
            return refuse(u"--%1 needs a number from 0 to %2, not \"%3\"."_s.arg(entry.option.names().first())
                              .arg(entry.highest)
                              .arg(parser.value(entry.option)));
    }

    orvia::demo::Options options;
    options.seed = static_cast<quint64>(*number(parser, seed));
    options.conversations = static_cast<int>(*number(parser, conversations));
    options.messages = static_cast<int>(*number(parser, messages));
    options.eventsPerSecond = static_cast<int>(*number(parser, events));
    options.keepsJournal = false;
    options.lively = !parser.isSet(quiet);

    orvia::demo::DemoService service(options);
    if (!service.listen(static_cast<quint16>(*number(parser, port)))) {
        std::fprintf(stderr, "orvia-demo-service: Port %s is not free.\n",
                     qPrintable(parser.value(port.option)));
        return 1;
    }
    printAccounts(service);
    return QCoreApplication::exec();
}
