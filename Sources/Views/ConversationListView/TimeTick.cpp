#include "Views/ConversationListView/TimeTick.h"

#include "Platform/RelativeTime.h"

namespace orvia {

using namespace std::chrono_literals;

namespace {

/// The timer's clock stands still while the machine sleeps, and calendar days may shift.
constexpr std::chrono::milliseconds longestWait = 1h;

} // namespace

TimeTick::TimeTick(Clock now, std::chrono::milliseconds leastSpacing, QObject* parent)
    : QObject(parent)
    , m_now(std::move(now))
    , m_leastSpacing(leastSpacing)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &TimeTick::fire);
}

void TimeTick::request(const std::optional<Instant>& then)
{
    if (!then)
        return;
    const Instant instant = m_now();
    Instant due = nextRelativeTimeChange(*then, instant);
    // A tick in the future means that the clock was set back.
    if (m_last > instant)
        m_last.reset();
    if (m_last)
        due = std::max(due, *m_last + m_leastSpacing);
    due = std::min(due, instant + std::max(longestWait, m_leastSpacing));
    if (m_due && *m_due <= due)
        return;
    m_due = due;
    m_timer.start(std::max<std::chrono::milliseconds>(due - instant, 1ms));
}

void TimeTick::fire()
{
    m_due.reset();
    m_last = m_now();
    Q_EMIT ticked();
}

} // namespace orvia
