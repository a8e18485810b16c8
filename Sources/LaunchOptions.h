#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace orvia {

/// What the command line asks for.
struct LaunchOptions {
    enum class Action {
        run,
        printHelp,
        printVersion,
        refuse, ///< the arguments make no sense; @c refusal says why
    };

    Action action = Action::run;
    QString refusal;             ///< one line, ready to be printed
    QString configurationFile;   ///< empty when none is named
    QList<QUrl> links;           ///< to be opened once the program runs: none or one
    bool isInBackground = false; ///< no window before somebody asks for it

    /// Reads @p arguments, the program's own name first. Whether the configuration file exists and can be
    /// read is part of the answer: a mistyped name must not lead to another service than the one meant.
    static LaunchOptions parse(const QStringList& arguments);

    /// The help and the version, ready to be printed. Need an application object.
    static QString helpText();
    static QString versionText();
};

} // namespace orvia
