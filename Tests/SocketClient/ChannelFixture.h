#pragma once

#include "SocketClient/SocketClient.h"
#include "Support/ScriptedService.h"
#include "Support/Waiting.h"

#include <gmock/gmock.h>

namespace orvia::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// Waits so short that reconnects and time-outs happen within a test, pings so rare that they do not disturb.
inline constexpr SocketTimings shortTimings{
    .pingInterval = 1h, .handshakeTimeout = 30s, .firstReconnectDelay = 1ms, .longestReconnectDelay = 8ms};

/// A client of a scripted service that records what its owner is told.
class ChannelFixture : public testing::Test {
protected:
    ChannelFixture() { useTimings(shortTimings); }

    void useTimings(const SocketTimings& timings)
    {
        client = std::make_unique<SocketClient>(timings);
        client->onConnectionChange = [this](bool connected) { changes.push_back(connected); };
        client->onEvent = [this](const SocketEvent& event) { events.push_back(event); };
        client->onSend = [this](const QString& text) { sent.append(text); };
    }

    void connectClient() { client->connect(service.url(), u"t0k3n"_s); }

    /// Connects and waits for the first sign of life.
    void connectAndWait()
    {
        connectClient();
        ASSERT_TRUE(waitUntil([this] { return !changes.empty(); }));
        ASSERT_EQ(changes.back(), true);
    }

    [[nodiscard]] bool waitForChannels(std::size_t count)
    {
        return waitUntil([this, count] { return service.channels().size() >= count; });
    }

    [[nodiscard]] bool waitForEvents(std::size_t count)
    {
        return waitUntil([this, count] { return events.size() >= count; });
    }

    ScriptedService service;
    std::unique_ptr<SocketClient> client;
    std::vector<bool> changes;
    std::vector<SocketEvent> events;
    QStringList sent;
};

} // namespace orvia::test
