#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace orvia::test {

/// A program that lives as long as this object. It is told to end, then made to, by its own process number;
/// it ends too when the test program crashes.
class ChildProcess {
public:
    ChildProcess();
    ~ChildProcess();
    Q_DISABLE_COPY_MOVE(ChildProcess)

    QProcess& process() { return m_process; }
    /// Ends the program at once, as a crash would.
    void kill();

private:
    QProcess m_process;
};

/// Sets environment variables of this process and puts back the earlier values in the end.
class ScopedEnvironment {
public:
    ScopedEnvironment() = default;
    ~ScopedEnvironment();
    Q_DISABLE_COPY_MOVE(ScopedEnvironment)

    void set(const QByteArray& name, const QByteArray& value);
    void unset(const QByteArray& name);

private:
    void remember(const QByteArray& name);

    struct Saved {
        QByteArray name;
        QByteArray value;
        bool wasSet = false;
    };
    QList<Saved> m_saved;
};

/// A session bus of the test's own that starts no service by itself. While it lives, it is this process's
/// session bus, and the XDG directories and HOME lie in a temporary directory.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    Q_DISABLE_COPY_MOVE(PrivateBus)

    bool isRunning() const;
    QString address() const { return m_address; }
    /// Where the private HOME and XDG directories lie.
    QString directory() const { return m_directory.path(); }
    QString dataHome() const { return m_directory.filePath(QStringLiteral("data")); }
    /// Lets the bus start @p program for whoever calls the service @p name, with these arguments.
    void addService(const QString& name, const QString& commandLine);
    /// Ends the bus at once, as a crash would.
    void kill();

private:
    QTemporaryDir m_directory;
    ScopedEnvironment m_environment;
    ChildProcess m_daemon;
    QString m_address;
};

} // namespace orvia::test
