#include "Views/ConversationListView/SnoozeExpiries.h"

namespace orvia {

void SnoozeExpiries::clear()
{
    m_order.clear();
    m_ends.clear();
}

void SnoozeExpiries::set(qsizetype position, std::optional<Instant> until, Instant now)
{
    const auto known = m_ends.find(position);
    if (known != m_ends.end()) {
        if (until == known->second)
            return;
        m_order.erase({known->second, position});
        m_ends.erase(known);
    }
    if (until && *until > now) {
        m_order.emplace(*until, position);
        m_ends.emplace(position, *until);
    }
}

std::optional<Instant> SnoozeExpiries::next() const
{
    return m_order.empty() ? std::nullopt : std::optional(m_order.begin()->first);
}

std::vector<qsizetype> SnoozeExpiries::takeExpired(Instant now)
{
    std::vector<qsizetype> expired;
    while (!m_order.empty() && m_order.begin()->first <= now) {
        expired.push_back(m_order.begin()->second);
        m_ends.erase(m_order.begin()->second);
        m_order.erase(m_order.begin());
    }
    return expired;
}

} // namespace orvia
