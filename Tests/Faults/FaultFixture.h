#pragma once

#include "Session/SessionFixture.h"

namespace orvia::test {

/// A way in which the service fails to answer a request, and what the agent is told of it.
struct Fault {
    const char* name;
    ScriptedAnswer answer;
    QString text; ///< in the banner; the service's origin stands as %1
};

/// What an agent has on the screen, as far as the session holds it.
struct Workplace {
    std::deque<Conversation> inbox;
    std::vector<Message> thread;
    std::optional<QString> selected;
    QHash<QString, QString> typingPreviews;
    QHash<QString, AgentDraft> drafts;
    std::vector<Agent> teammates;
    std::optional<Agent> agent;
    std::optional<QString> token;
    bool isBusy; ///< the inbox or a search is marked as loading

    friend bool operator==(const Workplace&, const Workplace&) = default;
};

/// An agent at work over a service that is about to fail: the inbox is there, c1 is open with its thread, its
/// visitor and a teammate are typing, the live channel is up. Writes down every banner.
class FaultTest : public SessionFixture {
protected:
    explicit FaultTest(ScriptedService::Transport transport = ScriptedService::Transport::plain);

    static constexpr qint64 longestBody = 256 * 1024;

    /// Signs in and opens c1.
    Session& goToWork();
    /// Lets the service answer everything as it should.
    void repair();
    Session& watched(Session& made);
    Workplace workplace() const;
    /// The banners since the last call, after the last of them has gone.
    QStringList takeBanners();
    /// The expected text with this service's origin in it.
    QString shown(const QString& text) const
    {
        return QString(text).replace(u"%1"_s, service.url().toString());
    }

    Conversation open = makeConversation(u"c1"_s);
    Conversation other = makeConversation(u"c2"_s);
    std::vector<Message> thread{makeMessage(u"m1"_s, u"c1"_s),
                                makeMessage(u"m2"_s, u"c1"_s, MessageSender::agent)};
    QStringList banners;
};

} // namespace orvia::test
