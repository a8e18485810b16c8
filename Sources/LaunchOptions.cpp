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

LaunchOptions refused(const QString& reason)
{
    return {LaunchOptions::Action::refuse, u"orvia: "_s + reason.simplified(), {}, {}, false};
}

struct Options {
    Options()
        : configuration(u"config"_s,
                        translated("Read the service's address from FILE (INI, key APIBaseURL)."), u"FILE"_s)
        , background(u"background"_s, translated("Take messages and show no window until it is asked for."))
        , help(parser.addHelpOption())
        , version(parser.addVersionOption())
    {
        parser.setApplicationDescription(translated("Desktop console of a live-chat service."));
        parser.addOption(configuration);
        parser.addOption(background);
        parser.addPositionalArgument(u"link"_s, translated("An orvia: link to open."), u"[orvia://...]"_s);
    }

    QCommandLineParser parser;
    QCommandLineOption configuration;
    QCommandLineOption background;
    QCommandLineOption help;
    QCommandLineOption version;
};

} // namespace

LaunchOptions LaunchOptions::parse(const QStringList& arguments)
{
    Options options;
    QCommandLineParser& parser = options.parser;
    if (!parser.parse(arguments))
        return refused(parser.errorText());
    if (parser.isSet(options.help))
        return {Action::printHelp, {}, {}, {}, false};
    if (parser.isSet(options.version))
        return {Action::printVersion, {}, {}, {}, false};

    LaunchOptions result;
    result.isInBackground = parser.isSet(options.background);
    const QStringList links = parser.positionalArguments();
    if (links.size() > 1)
        return refused(translated("at most one link can be opened"));
    for (const QString& link : links) {
        // What is a link but names no conversation is ignored later, whichever way it comes.
        const QUrl url(link);
        if (url.scheme().isEmpty())
            return refused(translated("\"%1\" is not a link").arg(link));
        result.links.append(url);
    }
    if (parser.isSet(options.configuration)) {
        result.configurationFile = parser.value(options.configuration);
        if (const QFileInfo file(result.configurationFile); !file.isFile() || !file.isReadable())
            return refused(
                translated("cannot read the configuration file \"%1\"").arg(result.configurationFile));
    }
    return result;
}

QString LaunchOptions::helpText()
{
    return Options().parser.helpText().trimmed();
}

QString LaunchOptions::versionText()
{
    return QCoreApplication::applicationName() + u' ' + QCoreApplication::applicationVersion();
}

} // namespace orvia
