#pragma once

#include <QHash>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <map>

namespace orvia {

/// One-shot timers by key, for thousands of keys at the cost of one timer of the event loop. Starting a timer
/// replaces the pending one of its key; a cancelled timer never fires. Monotonic. Main thread.
class KeyedTimers : public QObject {
    Q_OBJECT

public:
    /// @p onTimeout is called with the key of each timer that runs out.
    KeyedTimers(std::chrono::milliseconds delay, std::function<void(const QString&)> onTimeout,
                QObject* parent = nullptr);

    void start(const QString& key);
    void cancel(const QString& key);
    bool isPending(const QString& key) const { return m_deadlines.contains(key); }
    qsizetype pendingCount() const { return m_deadlines.size(); }

private:
    using TimePoint = std::chrono::steady_clock::time_point;

    void fire();
    void arm();

    std::chrono::milliseconds m_delay;
    std::function<void(const QString&)> m_onTimeout;
    QHash<QString, std::multimap<TimePoint, QString>::iterator> m_deadlines;
    std::multimap<TimePoint, QString> m_queue;
    QTimer m_timer;
};

} // namespace orvia
