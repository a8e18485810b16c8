#include "AppConfig.h"
#include "AppIdentity.h"
#include "LaunchOptions.h"
#include "OrviaApp.h"
#include "Theme/Theme.h"

#include <QApplication>

#include <algorithm>
#include <cstdio>
#include <cstring>

using namespace Qt::StringLiterals;
using orvia::LaunchOptions;

namespace {

/// Prints what the command line asked for. Answers the exit status, or nothing when the program is to run.
std::optional<int> printed(const LaunchOptions& options)
{
    if (options.action == LaunchOptions::Action::run)
        return std::nullopt;
    const bool refused = options.action == LaunchOptions::Action::refuse;
    std::fprintf(refused ? stderr : stdout, "%s\n", qUtf8Printable(options.text));
    return refused ? 2 : 0;
}

/// Whether the arguments ask for text only, which must work without a display.
bool asksForText(int argc, char** argv)
{
    return std::any_of(argv + 1, argv + argc, [](const char* argument) {
        const char* const names[] = {"-h", "--help", "--help-all", "-v", "--version"};
        return std::any_of(std::begin(names), std::end(names),
                           [argument](const char* name) { return std::strcmp(name, argument) == 0; });
    });
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setApplicationName(u"orvia"_s);
    QCoreApplication::setApplicationVersion(u"" ORVIA_VERSION ""_s);
    QGuiApplication::setDesktopFileName(orvia::AppIdentity::identifier);
    if (asksForText(argc, argv)) {
        const QCoreApplication application(argc, argv);
        return printed(LaunchOptions::parse(QCoreApplication::arguments())).value_or(0);
    }

    QApplication application(argc, argv);
    const LaunchOptions options = LaunchOptions::parse(QCoreApplication::arguments());
    if (const std::optional<int> status = printed(options))
        return *status;
    if (!options.configurationFile.isEmpty())
        orvia::AppConfig::setConfigurationFile(options.configurationFile);
    orvia::OrviaApp::quitOnTermination();
    orvia::Theme::shared().apply(application);
    orvia::OrviaApp console;
    if (!console.start(options.link))
        return 0;
    return QApplication::exec();
}
