#include "DemoService/ScriptedLife.h"

#include "DemoService/SeedData.h"

#include <QJsonArray>
#include <QTextBoundaryFinder>

#include <algorithm>

namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

/// One visitor and one teammate begin something every so many beats; a newcomer arrives now and then.
constexpr int visitorPause = 14;
constexpr int teammatePause = 17;
constexpr int newcomerPause = 130;

constexpr int draftBeats = 6;

int typingBeats(const QString& text)
{
    return std::clamp(static_cast<int>(text.size() / 6), 3, 9);
}

QStringList textsOf(const QJsonValue& list)
{
    QStringList texts;
    for (const QJsonValue item : list.toArray())
        texts.push_back(item.toString());
    return texts;
}

} // namespace

QString typedSoFar(const QString& text, int step, int steps)
{
    if (step >= steps)
        return text;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    finder.setPosition(text.size() * step / steps);
    if (!finder.isAtBoundary())
        finder.toPreviousBoundary();
    return text.left(finder.position());
}

ScriptedLife::ScriptedLife(Store& store, Desk& desk, LiveChannel& live, quint64 seed,
                           std::chrono::milliseconds beat)
    : m_store(store)
    , m_desk(desk)
    , m_live(live)
    , m_random(seed)
{
    m_timer.setInterval(beat);
    connect(&m_timer, &QTimer::timeout, this, &ScriptedLife::tick);
    loadParts();
}

ScriptedLife::~ScriptedLife()
{
    m_desk.onPosted = nullptr;
}

void ScriptedLife::start()
{
    m_desk.onPosted = [this](const Thread& thread, const Message& message) {
        reactTo(thread.conversation.id, message);
    };
    directVisitors();
    directTeammates();
    after(newcomerPause / 3, [this] {
        if (!m_newcomers.empty())
            arrive(m_newcomers[m_nextNewcomer++ % m_newcomers.size()]);
    });
    m_timer.start();
}

void ScriptedLife::loadParts()
{
    const QJsonObject life = seedDocument(u"life.json"_s);
    for (const QJsonValue item : life.value("visitors"_L1).toArray())
        m_visitors.push_back({item["conversation"_L1].toString(), textsOf(item["lines"_L1])});
    for (const QJsonValue item : life.value("teammates"_L1).toArray())
        m_teammates.push_back({item["conversation"_L1].toString(), item["agent"_L1].toString(),
                               item["draft"_L1].toString(), item["ends"_L1].toString()});
    for (const QJsonValue item : life.value("newcomers"_L1).toArray())
        m_newcomers.push_back({item["product"_L1].toString(),
                               Visitor{item["name"_L1].toString(), item["email"_L1].toString(), std::nullopt},
                               item["line"_L1].toString()});
    m_answers = textsOf(life.value("answers"_L1));

    // Parts in conversations that this service does not have are not played.
    const auto isMissing = [this](const auto& part) { return !m_store.thread(part.conversationId); };
    std::erase_if(m_visitors, isMissing);
    std::erase_if(m_teammates, isMissing);
}

void ScriptedLife::after(int beats, std::function<void()> step)
{
    m_steps.emplace(m_beat + std::max(1, beats), std::move(step));
}

void ScriptedLife::tick()
{
    ++m_beat;
    while (!m_steps.empty() && m_steps.begin()->first <= m_beat) {
        const auto step = std::move(m_steps.extract(m_steps.begin()).mapped());
        step();
    }
}

/// The first visitors come in their order, so that a fresh start always looks alike; later it is random.
void ScriptedLife::directVisitors()
{
    after(visitorPause, [this] { directVisitors(); });
    if (m_visitors.empty())
        return;
    const std::size_t index = m_nextVisitor < m_visitors.size() ? m_nextVisitor++ : choose(m_visitors.size());
    VisitorPart& part = m_visitors[index];
    typeAndSend(part.conversationId, part.lines[part.next++ % part.lines.size()]);
}

void ScriptedLife::directTeammates()
{
    after(teammatePause, [this] { directTeammates(); });
    if (m_teammates.empty())
        return;
    const std::size_t index =
        m_nextTeammate < m_teammates.size() ? m_nextTeammate++ : choose(m_teammates.size());
    play(m_teammates[index]);
}

/// A visitor reads what an agent has written and answers, unless they are typing already.
void ScriptedLife::reactTo(const QString& conversationId, const Message& message)
{
    if (message.sender != MessageSender::agent)
        return;
    after(2, [this, conversationId] {
        if (Thread* thread = m_store.thread(conversationId))
            m_desk.readByVisitor(*thread);
    });
    if (m_answers.isEmpty() || m_typing.contains(conversationId))
        return;
    const QString answer =
        m_answers[static_cast<qsizetype>(choose(static_cast<std::size_t>(m_answers.size())))];
    after(4, [this, conversationId, answer] { typeAndSend(conversationId, answer); });
}

int ScriptedLife::typeAndSend(const QString& conversationId, const QString& text)
{
    if (m_typing.contains(conversationId))
        return 0;
    m_typing.insert(conversationId);
    const int beats = typingBeats(text);
    for (int beat = 1; beat <= beats; ++beat) {
        after(beat, [this, conversationId, typed = typedSoFar(text, beat, beats)] {
            if (Thread* thread = m_store.thread(conversationId))
                m_desk.visitorTyping(*thread, typed);
        });
    }
    after(beats + 1, [this, conversationId, text] {
        m_typing.remove(conversationId);
        if (Thread* thread = m_store.thread(conversationId)) {
            MessageDraft draft;
            draft.body = text;
            draft.via = MessageVia::chat;
            m_desk.post(*thread, std::move(draft));
        }
    });
    return beats + 1;
}

void ScriptedLife::play(const TeammatePart& part)
{
    const auto isFree = [this, agentId = part.agentId] { return !m_live.hasChannel(agentId); };
    const Account* const account = m_store.account(part.agentId);
    const Thread* const thread = m_store.thread(part.conversationId);
    if (!account || !thread || !account->serves(thread->conversation.productId) || !isFree())
        return;
    m_live.setViewing(part.agentId, part.conversationId);
    for (int beat = 1; beat <= draftBeats; ++beat) {
        after(beat + 1, [this, isFree, part, typed = typedSoFar(part.draft, beat, draftBeats)] {
            if (isFree())
                m_desk.agentTyping(*m_store.thread(part.conversationId), m_store.account(part.agentId)->agent,
                                   typed);
        });
    }
    after(draftBeats + 3, [this, isFree, part] {
        if (isFree())
            finish(part);
    });
    after(draftBeats + 6, [this, agentId = part.agentId] { m_live.setViewing(agentId, std::nullopt); });
}

void ScriptedLife::finish(const TeammatePart& part)
{
    Thread& thread = *m_store.thread(part.conversationId);
    m_desk.agentTyping(thread, m_store.account(part.agentId)->agent, {});
    if (part.ends == "drop"_L1)
        return;
    MessageDraft draft;
    draft.sender = part.ends == "note"_L1 ? MessageSender::note : MessageSender::agent;
    draft.agentId = part.agentId;
    draft.body = part.draft;
    if (draft.sender == MessageSender::agent)
        draft.via = MessageVia::chat;
    m_desk.post(thread, std::move(draft));
}

void ScriptedLife::arrive(const Newcomer& newcomer)
{
    const Thread& thread = m_desk.startConversation(newcomer.productId, newcomer.visitor);
    typeAndSend(thread.conversation.id, newcomer.line);
    after(newcomerPause, [this] { arrive(m_newcomers[m_nextNewcomer++ % m_newcomers.size()]); });
}

} // namespace orvia::demo
