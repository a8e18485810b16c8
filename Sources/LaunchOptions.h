#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

namespace orvia {

/// What the command line asks for.
struct LaunchOptions {
    enum class Action {
        run,
        printHelp,
        printVersion,
        refuse, ///< the arguments make no sense; @c text says why, in one line
    };

    Action action = Action::run;
    QString text;              ///< the help, the version, or the reason, ready to be printed
    QString configurationFile; ///< empty when none is named
    std::optional<QUrl> link;  ///< to be opened once the program runs

    /// Reads @p arguments, the program's own name first. Whether the configuration file exists and can be
    /// read is part of the answer: a mistyped name must not lead to another service than the one meant.
    static LaunchOptions parse(const QStringList& arguments);
};

} // namespace orvia
