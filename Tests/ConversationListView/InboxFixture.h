#pragma once

#include "Session/SessionFixture.h"

class QListView;

namespace orvia::test {

class InboxFixture : public SessionFixture {
protected:
    /// A signed-in session with these open and closed conversations.
    Session& sessionWith(std::vector<Conversation> open, std::vector<Conversation> closed = {});
    /// The same with @p count open conversations "c0", "c1", ..., each a minute older than the one before.
    Session& sessionWithMany(int count);

    /// A visitor's message comes over the live channel.
    void deliverMessage(const QString& conversationId, Instant at, const QString& body = u"News"_s);
    /// The conversation as the session has it, to be changed and delivered.
    Conversation known(const QString& id) const;
};

} // namespace orvia::test
