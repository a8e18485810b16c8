#include "Views/ConversationDetailView/Transcript/HeightIndex.h"

#include <gmock/gmock.h>

#include <numeric>
#include <random>

namespace orvia {
namespace {

/// What the index must answer, by counting.
struct Plain {
    std::vector<int> heights;

    qint64 top(qsizetype row) const
    {
        return std::accumulate(heights.begin(), heights.begin() + row, qint64(0));
    }
    qsizetype rowAt(qint64 position) const
    {
        qsizetype row = 0;
        const auto last = static_cast<qsizetype>(heights.size()) - 1;
        while (row < last && top(row + 1) <= position)
            ++row;
        return row;
    }
};

TEST(HeightIndex, agreesWithCountingUnderRandomChanges)
{
    std::mt19937 random(7);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    HeightIndex index;
    Plain plain;
    for (int step = 0; step < 2000; ++step) {
        const int kind = below(10);
        const int height = below(4) == 0 ? 0 : below(90);
        if (kind == 0 && step % 400 == 0) {
            plain.heights.assign(static_cast<std::size_t>(below(60)), height);
            index.assign(plain.heights);
        } else if (kind < 5 || plain.heights.empty()) {
            plain.heights.push_back(height);
            index.append(height);
        } else if (kind < 7) {
            plain.heights.pop_back();
            index.removeLast();
        } else {
            const int row = below(static_cast<int>(plain.heights.size()));
            plain.heights[static_cast<std::size_t>(row)] = height;
            index.set(row, height);
        }
        ASSERT_EQ(index.size(), static_cast<qsizetype>(plain.heights.size()));
        ASSERT_EQ(index.total(), plain.top(index.size()));
        if (index.size() == 0)
            continue;
        const qsizetype row = below(static_cast<int>(index.size()));
        ASSERT_EQ(index.top(row), plain.top(row));
        const qint64 position = below(static_cast<int>(index.total()) + 40) - 20;
        ASSERT_EQ(index.rowAt(position), plain.rowAt(position)) << position;
    }
}

TEST(HeightIndex, answersForNoRows)
{
    const HeightIndex index;
    EXPECT_EQ(index.total(), 0);
    EXPECT_EQ(index.rowAt(0), -1);
}

} // namespace
} // namespace orvia
