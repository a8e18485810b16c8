#pragma once

class QCoreApplication;

namespace orvia {

/// Lets the process end in order, with status 0, when it is asked to terminate (SIGTERM, SIGINT, SIGHUP).
/// Main thread.
namespace TerminationSignals {

/// Notes the signals from here on; none is lost before @c quitOnArrival. Called once, before the application
/// object may exist.
void watch();

/// Ends the event loop of @p application when a signal arrives or has arrived.
void quitOnArrival(QCoreApplication& application);

} // namespace TerminationSignals

} // namespace orvia
