#include "AppConfig.h"
#include "AppIdentity.h"
#include "LaunchOptions.h"
#include "OrviaApp.h"
#include "Platform/ParallelWork.h"
#include "Platform/TerminationSignals.h"
#include "Theme/Theme.h"
#include "Theme/Typefaces.h"

#include <QApplication>
#include <QNetworkProxyFactory>
#include <QScopeGuard>

#include <cstdio>

namespace {

using namespace Qt::StringLiterals;
using orvia::LaunchOptions;

constexpr int usageError = 2;

/// Whether the program's window is wanted, as far as that can be told without a display. The toolkit's own
/// options, such as -platform or the -session of a session manager, are known to the application object
/// alone.
bool wantsWindow(int argc, char** argv)
{
    QStringList arguments;
    for (int index = 0; index < argc; ++index) {
        const QString argument = QString::fromLocal8Bit(argv[index]);
        if (argument.startsWith(u'-') && !argument.startsWith("--"_L1) && argument.size() > 2)
            return true;
        arguments.append(argument);
    }
    return LaunchOptions::parse(arguments).action == LaunchOptions::Action::run;
}

/// Prints what the command line asked for in place of the window, and answers the exit status.
int print(const LaunchOptions& options)
{
    if (options.action == LaunchOptions::Action::refuse) {
        std::fprintf(stderr, "%s\n", qPrintable(options.refusal));
        return usageError;
    }
    const bool isHelp = options.action == LaunchOptions::Action::printHelp;
    std::printf("%s\n", qPrintable(isHelp ? LaunchOptions::helpText() : LaunchOptions::versionText()));
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setApplicationName(orvia::AppIdentity::directory);
    QCoreApplication::setApplicationVersion(u"" ORVIA_VERSION ""_s);
    QGuiApplication::setDesktopFileName(orvia::AppIdentity::identifier);
    if (!wantsWindow(argc, argv)) {
        const QCoreApplication application(argc, argv);
        return print(LaunchOptions::parse(QCoreApplication::arguments()));
    }

    orvia::TerminationSignals::watch();
    // Beside the toolkit's start, which waits for the display most of the time.
    const orvia::ParallelWork typefaces(orvia::Typefaces::search);
    QApplication application(argc, argv);
    // The toolkit closes the font library with the application.
    const auto fontsEnd = qScopeGuard([&typefaces] { typefaces.result().wait(); });
    orvia::TerminationSignals::quitOnArrival(application);
    const LaunchOptions options = LaunchOptions::parse(QCoreApplication::arguments());
    if (options.action != LaunchOptions::Action::run)
        return print(options);
    if (!options.configurationFile.isEmpty())
        orvia::AppConfig::setConfigurationFile(options.configurationFile);
    QNetworkProxyFactory::setUseSystemConfiguration(true);
    orvia::Theme::setTypefaces(typefaces.result());
    orvia::Theme::shared().apply(application);
    orvia::OrviaApp console;
    return console.start(options.links, options.isInBackground) ? QApplication::exec() : 0;
}
