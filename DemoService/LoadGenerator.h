#pragma once

#include "DemoService/Desk.h"

#include <QElapsedTimer>
#include <QTimer>

#include <random>

namespace orvia::demo {

/// Makes the service as large and as busy as asked, from a seed: equal seeds give equal records and an equal
/// sequence of events.
class LoadGenerator : public QObject {
    Q_OBJECT

public:
    LoadGenerator(Store& store, Desk& desk, const LiveChannel& live, quint64 seed);

    /// Adds @p count conversations, most of them open, the first of them with @p messages messages (at least
    /// one) and the others with one to three. Their last messages lie before the present instant.
    void addConversations(int count, int messages);

    /// Makes things happen in all conversations, so that the live channel carries this many events per
    /// second: visitors type, write and read, and conversations change hands. 0 stops it.
    void start(int eventsPerSecond);
    /// Makes one thing happen now.
    void happen();

private:
    void catchUp();
    Conversation conversation(int index);
    void fill(Thread& thread, int messages, Instant last);
    VisitorMeta meta(const QString& site, Instant last);
    std::size_t choose(std::size_t count) { return static_cast<std::size_t>(m_random() % count); }

    Store& m_store;
    Desk& m_desk;
    const LiveChannel& m_live;
    std::mt19937_64 m_random;
    QTimer m_timer;
    QElapsedTimer m_elapsed;
    int m_eventsPerSecond = 0;
    qint64 m_sent = 0;
};

} // namespace orvia::demo
