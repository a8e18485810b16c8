#pragma once

#include <QtGlobal>

#include <vector>

namespace orvia {

/// The heights of a list's rows as prefix sums (a Fenwick tree): changing one height, adding a row, and going
/// from a row to its place or back cost the logarithm of the number of rows. Heights are not negative.
class HeightIndex {
public:
    /// Replaces all heights, at linear cost.
    void assign(std::vector<int> heights);
    void append(int height);
    void removeLast();
    void set(qsizetype row, int height);

    qsizetype size() const { return static_cast<qsizetype>(m_heights.size()); }
    int height(qsizetype row) const { return m_heights[static_cast<std::size_t>(row)]; }
    /// Where @p row begins; @p row may be the size, then it is the sum of all heights.
    qint64 top(qsizetype row) const;
    qint64 total() const { return top(size()); }
    /// The row that covers @p position, the first or the last one for a position outside. -1 without rows.
    qsizetype rowAt(qint64 position) const;

private:
    std::vector<int> m_heights;
    std::vector<qint64> m_sums; ///< 1-based: sums of ranges whose length is the lowest set bit of the index
};

} // namespace orvia
