#pragma once

#include "Models/Instant.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>

namespace orvia {

/// Repaints relative times when their words change. Rows ask for it while they are painted, so nothing wakes
/// up for rows that nobody sees; and however many rows ask, the ticks keep a least distance.
class TimeTick : public QObject {
    Q_OBJECT

public:
    using Clock = std::function<Instant()>;
    static constexpr std::chrono::milliseconds defaultSpacing = std::chrono::minutes(1);

    explicit TimeTick(Clock now = currentInstant, std::chrono::milliseconds leastSpacing = defaultSpacing,
                      QObject* parent = nullptr);

    Instant now() const { return m_now(); }
    /// Asks for a tick when the words for @p then, as seen from now, are no longer true. None for an absent
    /// one.
    void request(const std::optional<Instant>& then);
    /// When the next tick is due; none while nobody asked.
    std::optional<Instant> due() const { return m_due; }

Q_SIGNALS:
    /// What shows times paints itself again, and asks again.
    void ticked();

private:
    void fire();

    const Clock m_now;
    const std::chrono::milliseconds m_leastSpacing;
    QTimer m_timer;
    std::optional<Instant> m_due;
    std::optional<Instant> m_last;
};

} // namespace orvia
