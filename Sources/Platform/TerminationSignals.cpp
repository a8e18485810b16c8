#include "Platform/TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>

#include <sys/socket.h>
#include <unistd.h>

namespace orvia::TerminationSignals {

namespace {

/// Written to by the signal handler, read by the event loop.
int sockets[2] = {-1, -1};

void note(int)
{
    // Only what POSIX allows in a handler: one byte wakes the event loop.
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = write(sockets[0], &byte, sizeof byte);
}

} // namespace

void watch()
{
    // Without the sockets the signals keep their usual effect, which is to end the process too.
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets) != 0)
        return;
    struct sigaction action = {};
    action.sa_handler = note;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaction(signal, &action, nullptr);
}

void quitOnArrival(QCoreApplication& application)
{
    if (sockets[1] < 0)
        return;
    auto* const notifier = new QSocketNotifier(sockets[1], QSocketNotifier::Read, &application);
    QObject::connect(notifier, &QSocketNotifier::activated, &application, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::exit(0);
    });
}

} // namespace orvia::TerminationSignals
