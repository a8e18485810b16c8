#pragma once

#include <QString>

#include <map>

/// What the kernel knows of a process, under proc(5). A process that is not there ends the program: a
/// measurement without its subject is worth nothing.
namespace orvia::bench {

/// The proportional set size in bytes: private pages whole, shared ones by the number of their users.
qint64 proportionalMemory(qint64 processId);

/// How often each thread of the process went to sleep so far, which is as often as it woke up.
std::map<QString, qint64> wakeUps(qint64 processId);
/// How often threads woke up between the two countings. One that is gone woke up at least once, to end.
qint64 wakeUpsBetween(const std::map<QString, qint64>& before, const std::map<QString, qint64>& after);

/// The processor time of all threads that are running still, in nanoseconds.
qint64 processorTime(qint64 processId);

} // namespace orvia::bench
