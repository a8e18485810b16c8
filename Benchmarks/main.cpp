#include "Benchmarks/Benchmarks.h"

#include "Theme/Theme.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFile>
#include <QTextStream>

using namespace orvia::bench;
using namespace Qt::StringLiterals;

int main(int argc, char** argv)
{
    // Painted in memory unless told otherwise, so that no display takes part in what is measured.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    orvia::Theme::shared().apply(application);
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Measures the budgets of the console, each next to its floor."_s);
    parser.addHelpOption();
    const QCommandLineOption json(u"json"_s, u"Also write the results to <file>."_s, u"file"_s);
    const QCommandLineOption rounds(u"rounds"_s, u"Take each figure <count> times."_s, u"count"_s, u"7"_s);
    const QCommandLineOption only(u"only"_s, u"Take only the figures whose name contains <text>."_s,
                                  u"text"_s);
    parser.addOptions({json, rounds, only});
    parser.process(application);

    std::vector<Result> results;
    QTextStream progress(stderr);
    for (const auto& group : {codingMeasurements, sessionMeasurements, viewMeasurements, stallMeasurements,
                              programMeasurements}) {
        for (const Measurement& measurement : group()) {
            if (!measurement.name.contains(parser.value(only)))
                continue;
            progress << "measuring: " << measurement.name << Qt::endl;
            results.push_back(measure(measurement, std::max(1, parser.value(rounds).toInt())));
        }
    }

    QFile output;
    if (!output.open(stdout, QIODevice::WriteOnly))
        return EXIT_FAILURE;
    printTable(results, output);
    if (parser.isSet(json)) {
        QFile file(parser.value(json));
        if (!file.open(QIODevice::WriteOnly)) {
            progress << "cannot write " << file.fileName() << Qt::endl;
            return EXIT_FAILURE;
        }
        writeJSON(results, file);
    }
    return EXIT_SUCCESS;
}
