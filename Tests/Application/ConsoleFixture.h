#pragma once

#include "DemoService/DemoService.h"
#include "Support/PrivateBus.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>

namespace orvia::test {

/// The real program, started with @p arguments and ended with the test.
class Console {
public:
    explicit Console(const QStringList& arguments);

    /// Sends @p signal to the program.
    void signal(int number);
    bool isRunning() { return m_child.process().state() != QProcess::NotRunning; }
    /// Waits for the end; the exit code, or -1 for a crash.
    int exitCode();
    QByteArray output() { return m_child.process().readAllStandardOutput(); }
    QByteArray errors() { return m_child.process().readAllStandardError(); }

private:
    ChildProcess m_child;
};

/// A display, a private bus and user, and a service with the team's conversations.
class ConsoleTest : public testing::Test {
protected:
    void SetUp() override;

    /// Arguments that make the program use the service, and then @p more.
    QStringList arguments(const QStringList& more = {}) const;
    /// Leaves a token where the program looks for it, as an earlier sign-in would have done.
    void signInBeforehand();

    /// How often the service was asked for the conversation.
    qsizetype timesAsked(const QString& path) const;
    [[nodiscard]] bool waitForRequest(const QString& path) const;
    [[nodiscard]] bool waitForConversation(const QString& id) const;
    /// Waits until the program has come through its start-up: the live channel says what is on show.
    [[nodiscard]] bool waitForChannel() const;

    /// Puts the program on the display; before the bus, which hands its own environment on.
    struct Display : ScopedEnvironment {
        Display() { set("QT_QPA_PLATFORM", "xcb"); }
    };
    Display display;
    PrivateBus bus;
    demo::DemoService service;
};

} // namespace orvia::test
