#pragma once

#include <QString>

#include <functional>
#include <limits>
#include <optional>
#include <vector>

class QIODevice;

namespace orvia::bench {

/// Runs @p work often enough to take a few milliseconds and answers the seconds of one run.
double secondsPerRun(const std::function<void()>& work);

/// What a figure must not exceed.
struct Budget {
    enum class Kind {
        none,    ///< the figure is for information
        ratio,   ///< figure / floor at most @c limit
        atLeast, ///< the figure itself at least @c limit
        atMost,  ///< the figure itself at most @c limit
        above,   ///< figure - floor at most @c limit
    };

    Kind kind = Kind::none;
    double limit = 0;
};

/// One line of the table: how to take the figure once, and its floor if there is one, both in @c unit.
struct Measurement {
    QString name;
    QString unit;
    std::function<double()> figure;
    QString floorName;
    std::function<double()> floor;
    Budget budget;
    int mostRounds = std::numeric_limits<int>::max(); ///< for a figure that takes long and varies little
    int roundsFactor = 1;                             ///< for one that varies more than others
};

struct Result {
    QString name;
    QString unit;
    double figure = 0;
    QString floorName;
    std::optional<double> floor;
    std::optional<double> ratio;
    Budget budget;

    /// Whether the budget is kept; absent without one.
    std::optional<bool> isKept() const;
};

/// Takes figure and floor alternately, @p rounds times each unless the figure asks for other counts, and
/// answers the medians: of the values, and of the ratios of neighbours, so that a machine that slows down
/// meanwhile slows down both.
Result measure(const Measurement& measurement, int rounds);

void printTable(const std::vector<Result>& results, QIODevice& output);
void writeJSON(const std::vector<Result>& results, QIODevice& output);

} // namespace orvia::bench
