#include "Benchmarks/Measurement.h"

#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>

#include <algorithm>
#include <chrono>

namespace orvia::bench {

using namespace Qt::StringLiterals;

namespace {

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

QString verdict(const Result& result)
{
    const auto kept = result.isKept();
    if (!kept)
        return u"-"_s;
    return *kept ? u"kept"_s : u"MISSED"_s;
}

QString budgetText(const Budget& budget)
{
    switch (budget.kind) {
    case Budget::Kind::ratio:
        return u"<= %1 x floor"_s.arg(budget.limit);
    case Budget::Kind::atLeast:
        return u">= %1"_s.arg(budget.limit, 0, 'f', 0);
    case Budget::Kind::atMost:
        return u"<= %1"_s.arg(budget.limit, 0, 'f', 0);
    case Budget::Kind::above:
        return u"<= floor + %1"_s.arg(budget.limit, 0, 'f', 0);
    case Budget::Kind::none:
        break;
    }
    return u"-"_s;
}

QString numberText(double number)
{
    return QString::number(number, 'f', number >= 1000 ? 0 : number >= 10 ? 1 : 3);
}

} // namespace

double secondsPerRun(const std::function<void()>& work)
{
    using Clock = std::chrono::steady_clock;
    constexpr std::chrono::duration<double> longEnough = std::chrono::milliseconds(20);
    for (int runs = 1;; runs *= 2) {
        const auto begin = Clock::now();
        for (int i = 0; i < runs; ++i)
            work();
        const std::chrono::duration<double> taken = Clock::now() - begin;
        if (taken >= longEnough)
            return taken.count() / runs;
    }
}

std::optional<bool> Result::isKept() const
{
    switch (budget.kind) {
    case Budget::Kind::ratio:
        return ratio ? std::optional(*ratio <= budget.limit) : std::nullopt;
    case Budget::Kind::atLeast:
        return figure >= budget.limit;
    case Budget::Kind::atMost:
        return figure <= budget.limit;
    case Budget::Kind::above:
        return floor ? std::optional(figure - *floor <= budget.limit) : std::nullopt;
    case Budget::Kind::none:
        break;
    }
    return std::nullopt;
}

Result measure(const Measurement& measurement, int rounds)
{
    std::vector<double> figures;
    std::vector<double> floors;
    std::vector<double> ratios;
    for (int round = 0; round < std::min(rounds * measurement.roundsFactor, measurement.mostRounds);
         ++round) {
        figures.push_back(measurement.figure());
        if (measurement.floor) {
            floors.push_back(measurement.floor());
            ratios.push_back(figures.back() / floors.back());
        }
    }
    Result result{measurement.name, measurement.unit, median(std::move(figures)), measurement.floorName,
                  std::nullopt,     std::nullopt,     measurement.budget};
    if (!floors.empty()) {
        result.floor = median(std::move(floors));
        // Of neighbours, which shared what the machine was like at that moment.
        result.ratio = median(std::move(ratios));
    }
    return result;
}

void printTable(const std::vector<Result>& results, QIODevice& output)
{
    std::vector<std::array<QString, 7>> rows{
        {u"figure"_s, u"value"_s, u"floor"_s, u"floor value"_s, u"ratio"_s, u"budget"_s, u"verdict"_s}};
    for (const Result& result : results) {
        rows.push_back({result.name, numberText(result.figure) + u' ' + result.unit,
                        result.floor ? result.floorName : u"-"_s,
                        result.floor ? numberText(*result.floor) + u' ' + result.unit : u"-"_s,
                        result.ratio ? QString::number(*result.ratio, 'f', 2) : u"-"_s,
                        budgetText(result.budget), verdict(result)});
    }
    std::array<qsizetype, 7> widths{};
    for (const auto& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], row[column].size());
    }
    QTextStream stream(&output);
    for (const auto& row : rows) {
        QString line;
        for (std::size_t column = 0; column < row.size(); ++column)
            line += row[column].leftJustified(widths[column] + 2);
        stream << line.trimmed() << Qt::endl;
    }
}

void writeJSON(const std::vector<Result>& results, QIODevice& output)
{
    QJsonArray array;
    for (const Result& result : results) {
        QJsonObject object{{u"name"_s, result.name}, {u"unit"_s, result.unit}, {u"figure"_s, result.figure}};
        if (result.floor) {
            object[u"floorName"_s] = result.floorName;
            object[u"floor"_s] = *result.floor;
            object[u"ratio"_s] = *result.ratio;
        }
        if (result.budget.kind != Budget::Kind::none) {
            object[u"budget"_s] = budgetText(result.budget);
            object[u"kept"_s] = result.isKept().value_or(false);
        }
        array.append(object);
    }
    output.write(QJsonDocument(QJsonObject{{u"results"_s, array}}).toJson());
}

} // namespace orvia::bench
