#pragma once

#include "Benchmarks/VirtualDisplay.h"
#include "Support/PrivateBus.h"

#include <QStringList>
#include <QUrl>

#include <memory>
#include <optional>

/// The real programs, each in a process of its own, on a bus and a display of the measurement's own.
namespace orvia::bench {

/// The demo service, loaded by its command line.
class ServiceProcess {
public:
    explicit ServiceProcess(const QStringList& arguments);

    const QUrl& origin() const { return m_origin; }
    /// A token of an agent who sees the whole inbox.
    QString signIn() const;
    /// The milliseconds that the service alone takes for these requests of its API, made one after the other
    /// by a client that reads the answers and drops them.
    double millisecondsFor(const QStringList& paths, const QString& token) const;

private:
    test::ChildProcess m_process;
    QUrl m_origin;
};

/// A program with a window on the display; ended with this object.
class WindowProcess {
public:
    WindowProcess(const VirtualDisplay& display, const QString& program, const QStringList& arguments = {});
    ~WindowProcess();

    qint64 processId() const { return m_process.process().processId(); }

private:
    const VirtualDisplay& m_display;
    mutable test::ChildProcess m_process;
};

/// The places where a console looks for its settings and its token, and the display where it shows itself.
class Stage {
public:
    Stage();

    const VirtualDisplay& display() const { return m_display; }
    /// The arguments of a console that talks to @p service and is signed out.
    QStringList signedOut(const ServiceProcess& service);
    /// The arguments of a console that finds its token in the store and, from the second time on, the
    /// identity that an earlier start cached.
    QStringList signedIn(const ServiceProcess& service, const QString& token);

private:
    QStringList arguments(const ServiceProcess& service) const;

    test::PrivateBus m_bus;
    VirtualDisplay m_display;
    std::optional<QByteArray> m_identity;
};

/// The path of a program of this project.
QString programPath(const QString& name);

} // namespace orvia::bench
