#include "Input.h"

#include "APIClient/NetworkSession.h"
#include "Keychain/TokenStore.h"
#include "Session/DefaultsStore.h"
#include "Session/Session.h"
#include "SocketClient/InboundFrames.h"

#include <QSet>
#include <QTemporaryDir>

#include <algorithm>
#include <deque>

/// What a live channel may say to a signed-in session. Each field is a step, which its first byte names: "t"
/// a text frame, "b" a binary frame, "s" the agent selects the conversation with this id.
namespace orvia::fuzzing {
namespace {

using namespace Qt::StringLiterals;

const QString ownId = u"mara"_s;

class FixedToken : public TokenStore {
public:
    std::optional<QString> string(const QString&) override { return u"token"_s; }
    bool set(const std::optional<QString>&, const QString&) override { return true; }
};

/// What a session is built from. Nothing of it changes, so that one is enough for all inputs.
struct Surroundings {
    Surroundings()
        : defaults(directory.filePath(u"defaults.ini"_s))
    {
        defaults.setData(R"({"agent":{"_id":"mara","name":"Mara Ellison","role":"agent"},"products":[]})",
                         u"cachedIdentity"_s);
    }

    QTemporaryDir directory;
    DefaultsStore defaults;
    FixedToken tokens;
    NetworkSession network;
};

Surroundings& surroundings()
{
    static Surroundings surroundings;
    return surroundings;
}

/// A session, and what somebody who follows its notifications takes it to hold.
class Console {
public:
    Console()
        : m_session({surroundings().defaults, surroundings().tokens, surroundings().network,
                     QUrl(u"http://127.0.0.1:9"_s)})
    {
        require(m_session.agent() && m_session.agent()->id == ownId, "the cached identity is restored");
        const ConversationStore& conversations = m_session.conversations();
        QObject::connect(&m_session, &Session::conversationInserted, [this, &conversations](qsizetype index) {
            require(index == static_cast<qsizetype>(m_inbox.size()), "a conversation is added at the end");
            m_inbox.push_back(conversations.at(index));
        });
        QObject::connect(&m_session, &Session::conversationChanged, [this, &conversations](qsizetype index) {
            Conversation& followed = m_inbox.at(static_cast<std::size_t>(index));
            require(followed != conversations.at(index), "only a change is told");
            require(followed.id == conversations.at(index).id, "a change keeps the identity");
            followed = conversations.at(index);
        });
        QObject::connect(&m_session, &Session::messageAppended,
                         [this](const QString& id) { ++m_threadSizes[id]; });
    }

    void step(const QByteArray& field)
    {
        if (field.isEmpty())
            return;
        const QByteArray argument(field.constData() + 1, field.size() - 1);
        std::optional<SocketEvent> event;
        switch (field[0]) {
        case 't':
            event = m_frames.textFrame(QString::fromUtf8(argument));
            break;
        case 'b':
            event = m_frames.binaryFrame(argument);
            break;
        case 's':
            m_session.setSelectedConversationId(
                argument.isEmpty() ? std::nullopt : std::optional(QString::fromUtf8(argument)));
            break;
        default:
            return;
        }
        if (event)
            m_session.handle(*event);
        checkInbox();
        checkThreads();
        checkMarks();
    }

private:
    void checkInbox() const
    {
        const ConversationStore& conversations = m_session.conversations();
        require(std::ranges::equal(conversations.all(), m_inbox), "every change of the inbox is told");
        for (qsizetype index = 0; index < conversations.size(); ++index) {
            const QString& id = conversations.at(index).id;
            require(conversations.indexOf(id) == index, "identifiers are unique and found by the index");
        }
    }

    void checkThreads() const
    {
        const MessageStore& messages = m_session.messages();
        require(messages.conversationIds().size() == m_threadSizes.size(), "every thread is told");
        for (const QString& conversationId : messages.conversationIds()) {
            const auto& thread = messages.thread(conversationId);
            QSet<QString> ids;
            for (const Message& message : thread) {
                require(messages.contains(conversationId, message.id), "the index knows every message");
                ids.insert(message.id);
            }
            require(ids.size() == static_cast<qsizetype>(thread.size()), "a message is there once");
            require(ids.size() == m_threadSizes.value(conversationId), "every message is told");
        }
    }

    void checkMarks() const
    {
        for (const QString& preview : m_session.typingPreviews())
            require(!preview.isEmpty(), "an empty preview is none");
        for (const AgentDraft& draft : m_session.agentPreviews())
            require(!draft.text.isEmpty() && draft.agentId != ownId, "a draft is a teammate's");
        for (const auto& viewers : m_session.viewers()) {
            QSet<QString> ids{ownId};
            for (const ViewerAgent& viewer : viewers) {
                require(!ids.contains(viewer.id), "viewers are teammates, each of them once");
                ids.insert(viewer.id);
            }
            require(!viewers.empty(), "no viewers are no entry");
        }
    }

    Session m_session;
    InboundFrames m_frames;
    std::deque<Conversation> m_inbox;
    QHash<QString, qsizetype> m_threadSizes;
};

} // namespace
} // namespace orvia::fuzzing

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    orvia::fuzzing::Input input(data, size);
    orvia::fuzzing::Console console;
    while (!input.atEnd())
        console.step(input.bytes());
    return 0;
}
