#include "Views/ConversationDetailView/Transcript/HeightIndex.h"

#include <gmock/gmock.h>

#include <numeric>
#include <random>

namespace orvia {
namespace {

TEST(HeightIndex, agreesWithCountingUnderRandomChanges)
{
    std::mt19937 random(7);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    HeightIndex index;
    std::vector<int> heights;
    const auto top = [&heights](qsizetype row) {
        return std::accumulate(heights.begin(), heights.begin() + row, qint64(0));
    };
    for (int step = 0; step < 2000; ++step) {
        const int kind = below(10);
        const int height = below(4) == 0 ? 0 : below(90);
        if (kind == 0 && step % 400 == 0) {
            heights.assign(static_cast<std::size_t>(below(60)), height);
            index.assign(heights);
        } else if (kind < 5 || heights.empty()) {
            heights.push_back(height);
            index.append(height);
        } else if (kind < 7) {
            heights.pop_back();
            index.removeLast();
        } else {
            const int row = below(static_cast<int>(heights.size()));
            heights[static_cast<std::size_t>(row)] = height;
            index.set(row, height);
        }
        ASSERT_EQ(index.size(), std::ssize(heights));
        ASSERT_EQ(index.total(), top(index.size()));
        const int position = below(static_cast<int>(index.total()) + 40) - 20;
        qsizetype row = heights.empty() ? -1 : 0;
        while (row + 1 < index.size() && top(row + 1) <= position)
            ++row;
        ASSERT_EQ(index.rowAt(position), row) << position;
        ASSERT_EQ(row < 0 ? 0 : index.top(row), row < 0 ? 0 : top(row));
    }
}

} // namespace
} // namespace orvia
