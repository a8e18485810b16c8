#include "LaunchOptions.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

QString translated(const char* text)
{
    return QCoreApplication::translate("orvia::LaunchOptions", text);
}

LaunchOptions refusal(const QString& reason)
{
    return {LaunchOptions::Action::refuse, u"orvia: "_s + reason, {}, {}};
}

} // namespace

LaunchOptions LaunchOptions::parse(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(translated("Desktop console of a live-chat service."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption configuration(
        u"config"_s, translated("Read the service's address from FILE (INI, key APIBaseURL)."), u"FILE"_s);
    parser.addOption(configuration);
    parser.addPositionalArgument(u"link"_s, translated("An orvia: link to open."), u"[orvia://...]"_s);

    if (!parser.parse(arguments))
        return refusal(parser.errorText().simplified());
    if (parser.isSet(help))
        return {Action::printHelp, parser.helpText().trimmed(), {}, {}};
    if (parser.isSet(version))
        return {Action::printVersion, u"orvia " ORVIA_VERSION ""_s, {}, {}};

    const QStringList links = parser.positionalArguments();
    if (links.size() > 1)
        return refusal(translated("at most one link can be opened"));
    LaunchOptions options;
    if (!links.isEmpty())
        options.link = QUrl(links.first());
    if (parser.isSet(configuration)) {
        options.configurationFile = parser.value(configuration);
        if (const QFileInfo file(options.configurationFile); !file.isFile() || !file.isReadable())
            return refusal(
                translated("cannot read the configuration file %1").arg(options.configurationFile));
    }
    return options;
}

} // namespace orvia
