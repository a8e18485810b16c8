#include "Views/ConversationDetailView/Transcript/HeightIndex.h"

#include <bit>

namespace orvia {

namespace {

constexpr std::size_t lowestBit(std::size_t index)
{
    return index & (~index + 1);
}

} // namespace

void HeightIndex::assign(std::vector<int> heights)
{
    m_heights = std::move(heights);
    m_sums.assign(m_heights.size() + 1, 0);
    for (std::size_t i = 1; i < m_sums.size(); ++i) {
        m_sums[i] += m_heights[i - 1];
        const std::size_t parent = i + lowestBit(i);
        if (parent < m_sums.size())
            m_sums[parent] += m_sums[i];
    }
}

void HeightIndex::append(int height)
{
    if (m_sums.empty())
        m_sums.push_back(0);
    m_heights.push_back(height);
    const std::size_t index = m_heights.size();
    const auto begin = static_cast<qsizetype>(index - lowestBit(index));
    m_sums.push_back(top(static_cast<qsizetype>(index) - 1) - top(begin) + height);
}

void HeightIndex::removeLast()
{
    m_heights.pop_back();
    m_sums.pop_back();
}

void HeightIndex::set(qsizetype row, int height)
{
    const auto position = static_cast<std::size_t>(row);
    const int change = height - m_heights[position];
    m_heights[position] = height;
    for (std::size_t i = position + 1; change != 0 && i < m_sums.size(); i += lowestBit(i))
        m_sums[i] += change;
}

qint64 HeightIndex::top(qsizetype row) const
{
    qint64 sum = 0;
    for (auto i = static_cast<std::size_t>(row); i > 0; i -= lowestBit(i))
        sum += m_sums[i];
    return sum;
}

qsizetype HeightIndex::rowAt(qint64 position) const
{
    if (m_heights.empty())
        return -1;
    std::size_t row = 0;
    qint64 rest = position;
    for (std::size_t step = std::bit_floor(m_heights.size()); step > 0; step /= 2) {
        if (row + step < m_sums.size() && m_sums[row + step] <= rest) {
            row += step;
            rest -= m_sums[row];
        }
    }
    return static_cast<qsizetype>(std::min(row, m_heights.size() - 1));
}

} // namespace orvia
