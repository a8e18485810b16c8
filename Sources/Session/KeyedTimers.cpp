#include "Session/KeyedTimers.h"

namespace orvia {

KeyedTimers::KeyedTimers(std::chrono::milliseconds delay, std::function<void(const QString&)> onTimeout,
                         QObject* parent)
    : QObject(parent)
    , m_delay(delay)
    , m_onTimeout(std::move(onTimeout))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &KeyedTimers::fire);
}

void KeyedTimers::start(const QString& key)
{
    const TimePoint deadline = std::chrono::steady_clock::now() + m_delay;
    const auto pending = m_deadlines.find(key);
    if (pending != m_deadlines.end()) {
        m_queue.erase(*pending);
        *pending = m_queue.emplace(deadline, key);
    } else {
        m_deadlines.insert(key, m_queue.emplace(deadline, key));
    }
    // The running timer is early at worst: every delay is the same, so nothing is due before it.
    if (!m_timer.isActive())
        arm();
}

void KeyedTimers::cancel(const QString& key)
{
    const auto pending = m_deadlines.find(key);
    if (pending == m_deadlines.end())
        return;
    m_queue.erase(*pending);
    m_deadlines.erase(pending);
    if (m_queue.empty())
        m_timer.stop();
}

void KeyedTimers::fire()
{
    const TimePoint now = std::chrono::steady_clock::now();
    while (!m_queue.empty() && m_queue.begin()->first <= now) {
        const QString key = m_queue.begin()->second;
        m_queue.erase(m_queue.begin());
        m_deadlines.remove(key);
        m_onTimeout(key);
    }
    if (!m_queue.empty())
        arm();
}

void KeyedTimers::arm()
{
    const auto wait = m_queue.begin()->first - std::chrono::steady_clock::now();
    // Rounded up, so that the timer does not wake just before its deadline and once more at it.
    m_timer.start(std::max(std::chrono::ceil<std::chrono::milliseconds>(wait), std::chrono::milliseconds(0)));
}

} // namespace orvia
