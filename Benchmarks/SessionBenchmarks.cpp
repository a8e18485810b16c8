#include "APIClient/NetworkSession.h"
#include "Benchmarks/Benchmarks.h"
#include "Benchmarks/Sample.h"
#include "Keychain/TokenStore.h"
#include "Models/APIJSON.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"

#include <QTemporaryDir>

#include <cstdlib>

namespace orvia::bench {

using namespace Qt::StringLiterals;

namespace {

class NoTokens : public TokenStore {
public:
    std::optional<QString> string(const QString&) override { return std::nullopt; }
    bool set(const std::optional<QString>&, const QString&) override { return true; }
};

/// A session with an inbox, and nothing around it. The conversations come the way new ones do.
class Desk {
public:
    explicit Desk(int inboxSize)
        : m_defaults(m_directory.filePath(u"defaults.ini"_s))
        , m_session({m_defaults, m_tokens, m_network, QUrl(u"http://127.0.0.1:9"_s)})
    {
        for (int number = 0; number < inboxSize; ++number) {
            SocketEvent event;
            event.type = u"conversation"_s;
            event.conversation = sampleConversation(number);
            m_session.handle(event);
        }
        if (m_session.conversations().size() != inboxSize)
            std::abort();
    }

    Session& session() { return m_session; }

private:
    QTemporaryDir m_directory;
    DefaultsStore m_defaults;
    NoTokens m_tokens;
    NetworkSession m_network;
    Session m_session;
};

constexpr int eventCount = 20'000;
/// More than an agent, a whole team has under way at once.
constexpr int activeConversations = 100;

/// The seconds of one event. A fresh session every time, because the threads grow with every message.
double secondsPerEvent(int inboxSize, int active)
{
    const std::vector<SocketEvent> events = sampleEvents(eventCount, inboxSize, active);
    Desk desk(inboxSize);
    std::size_t changes = 0;
    QObject::connect(&desk.session(), &Session::conversationChanged, [&changes] { ++changes; });
    const auto begin = std::chrono::steady_clock::now();
    for (const SocketEvent& event : events)
        desk.session().handle(event);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    if (changes < static_cast<std::size_t>(eventCount) / 4)
        std::abort();
    return taken.count() / eventCount;
}

std::function<double()> microsecondsPerEvent(int inboxSize, int active)
{
    return [inboxSize, active] { return secondsPerEvent(inboxSize, active) * 1e6; };
}

/// The same events of the same number of conversations, in a larger inbox.
Measurement event(int inboxSize, Budget budget)
{
    return {u"one live event, inbox of %L1"_s.arg(inboxSize),
            u"us"_s,
            microsecondsPerEvent(inboxSize, activeConversations),
            u"the same, inbox of 100"_s,
            microsecondsPerEvent(activeConversations, activeConversations),
            budget};
}

/// Frames decoded and applied in a second, as the live channel delivers them.
double eventsPerSecond()
{
    constexpr int inboxSize = 10'000;
    std::vector<QByteArray> frames;
    for (const SocketEvent& event : sampleEvents(eventCount, inboxSize, inboxSize))
        frames.push_back(APIJSON::encoder.encode(event));
    Desk desk(inboxSize);
    const auto begin = std::chrono::steady_clock::now();
    for (const QByteArray& frame : frames)
        desk.session().handle(APIJSON::decoder.decode<SocketEvent>(frame));
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    return eventCount / taken.count();
}

/// The derived list next to what it cannot do without: ordering as many instants.
Measurement listing(int inboxSize)
{
    const auto desk = std::make_shared<Desk>(inboxSize);
    const auto instants = std::make_shared<std::vector<std::pair<Instant, const Conversation*>>>();
    for (const Conversation* conversation : desk->session().filteredConversations())
        instants->emplace_back(*conversation->lastMessageAt, conversation);
    std::sort(instants->begin(), instants->end(),
              [](const auto& left, const auto& right) { return left.second < right.second; });
    const auto list = [desk] {
        if (desk->session().filteredConversations().empty())
            std::abort();
    };
    const auto sort = [instants] {
        auto copy = *instants;
        std::sort(copy.begin(), copy.end());
        if (copy.empty())
            std::abort();
    };
    return {u"filteredConversations of %L1"_s.arg(inboxSize), u"ms"_s,
            [list] { return secondsPerRun(list) * 1e3; },     u"sort of as many instants"_s,
            [sort] { return secondsPerRun(sort) * 1e3; },     {}};
}

} // namespace

std::vector<Measurement> sessionMeasurements()
{
    return {
        event(1'000, {}),
        event(10'000, {}),
        event(100'000, {Budget::Kind::ratio, 2}),
        {u"one live event, each of 100,000 conversations in turn"_s,
         u"us"_s,
         microsecondsPerEvent(100'000, 100'000),
         u"each of 100"_s,
         microsecondsPerEvent(100, 100),
         {}},
        {u"live events decoded and applied, inbox of 10,000"_s,
         u"per second"_s,
         eventsPerSecond,
         {},
         {},
         {Budget::Kind::atLeast, 100'000}},
        listing(1'000),
        listing(10'000),
        listing(100'000),
    };
}

} // namespace orvia::bench
