#pragma once

#include <QtGlobal>

#include <map>
#include <string>

namespace orvia::test {

/// What this process holds at one moment, each thing under its kind, so that two moments can be compared.
struct Inventory {
    using Counts = std::map<std::string, int>;

    Counts objects;            ///< living QObjects of the process by class
    Counts timers;             ///< running timers of the main thread by their owner's class
    Counts descriptors;        ///< open files, sockets, pipes
    qint64 heapBytes = 0;      ///< handed out by the allocator
    qint64 anonymousBytes = 0; ///< in memory and its own, after the allocator has given back what it can

    /// Idle network connections come and go on their own; they are closed first. Main thread.
    static Inventory take();
    /// Begins to watch what objects are made. Once, before the first of those that are to be counted.
    static void watchObjects();
    /// Keyed timers that are still to fire, of every owner.
    static qsizetype pendingKeyedTimers();

    /// What @p after has more or fewer of than @p before, a line each; empty when they are equal.
    static std::string difference(const Counts& before, const Counts& after);
};

} // namespace orvia::test
