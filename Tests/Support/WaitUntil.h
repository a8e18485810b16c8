#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <chrono>

namespace orvia::test {

/// Runs the event loop until @p predicate holds. Answers false only when it does not within a time that no
/// working program needs.
template <typename Predicate>
bool waitUntil(Predicate predicate, std::chrono::milliseconds limit = std::chrono::seconds(30)) {
    const QDeadlineTimer deadline(limit);
    while (!predicate()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

} // namespace orvia::test
