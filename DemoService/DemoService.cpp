#include "DemoService/DemoService.h"

#include "DemoService/LoadGenerator.h"
#include "DemoService/Router.h"
#include "DemoService/Routes.h"
#include "DemoService/ScriptedLife.h"
#include "DemoService/SeedData.h"

#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>

namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

template <class Entry>
void note(std::deque<Entry>& journal, Entry entry)
{
    journal.push_back(std::move(entry));
    if (journal.size() > DemoService::longestJournal)
        journal.pop_front();
}

const auto everybody = [](const QString&) { return true; };

} // namespace

QString DemoService::password()
{
    return u"demo"_s;
}

DemoService::DemoService(Options options, QObject* parent)
    : QObject(parent)
    , m_options(std::move(options))
    , m_store(m_options.clock)
    , m_desk(m_store, m_live)
    , m_router(std::make_unique<Router>(m_store))
{
    const Workplace workplace{m_store, m_desk, m_files};
    addIdentityRoutes(*m_router, workplace);
    addConversationRoutes(*m_router, workplace);
    addSearchRoutes(*m_router, workplace);
    addAdminRoutes(*m_router, workplace);

    m_live.onFrame = [this](const QString& agentId, const QByteArray& frame) { receive(agentId, frame); };
    m_live.onViewersChanged = [this](const QString& id) { m_desk.announceViewers(id); };
    m_live.onOpened = [this](const QString& agentId) { greet(agentId); };

    addTeam(m_store, password());
    if (m_options.withRecords)
        addConversations(m_store, m_files);
    m_load = std::make_unique<LoadGenerator>(m_store, m_desk, m_live, m_options.seed);
    m_load->addConversations(m_options.conversations, m_options.messages);
    m_load->start(m_options.eventsPerSecond);
    if (m_options.lively) {
        m_life = std::make_unique<ScriptedLife>(m_store, m_desk, m_live, m_options.seed, m_options.beat);
        m_life->start();
    }
    startServer();
}

DemoService::~DemoService()
{
    m_live.onViewersChanged = nullptr;
}

bool DemoService::listen(quint16 port)
{
    if (!m_server)
        startServer();
    m_port = m_server->listen(QHostAddress(QHostAddress::LocalHost), port);
    return m_port != 0;
}

void DemoService::stop()
{
    // Upgraded connections belong to the server, so that they end before it.
    m_live.abortAll();
    m_server.reset();
    m_port = 0;
}

QUrl DemoService::origin() const
{
    return QUrl(u"http://127.0.0.1:%1"_s.arg(m_port));
}

Thread& DemoService::thread(const QString& conversationId)
{
    Thread* const found = m_store.thread(conversationId);
    Q_ASSERT(found);
    return *found;
}

QString DemoService::tokenOf(const QString& agentId)
{
    const Account* const account = m_store.account(agentId);
    Q_ASSERT(account);
    return m_store.newToken(*account);
}

Message DemoService::postAsVisitor(const QString& conversationId, const QString& body, MessageVia via)
{
    MessageDraft draft;
    draft.body = body;
    draft.via = via;
    return m_desk.post(thread(conversationId), std::move(draft));
}

void DemoService::emitEvent(const SocketEvent& event)
{
    m_live.send(event, everybody);
}

void DemoService::clearJournal()
{
    m_requests.clear();
    m_frames.clear();
}

void DemoService::startServer()
{
    m_server = std::make_unique<HTTPServer>();
    m_server->onRequest = [this](Request request) { return answer(std::move(request)); };
    m_server->mayUpgrade = [this](const QString& token) { return m_store.accountByToken(token) != nullptr; };
    m_server->onUpgrade = [this](std::unique_ptr<QWebSocket> socket, const QString& token) {
        if (const Account* account = m_store.accountByToken(token))
            m_live.add(std::move(socket), account->agent.id);
    };
}

Answer DemoService::answer(Request request)
{
    if (m_options.keepsJournal)
        note(m_requests, request);
    return m_router->answer(std::move(request));
}

/// Frames that are malformed, unknown or about somebody else's conversation are without effect.
void DemoService::receive(const QString& agentId, const QByteArray& frame)
{
    if (m_options.keepsJournal)
        note(m_frames, {agentId, frame});
    const QJsonObject object = QJsonDocument::fromJson(frame).object();
    const QString type = object.value("type"_L1).toString();
    const QJsonValue conversationId = object.value("conversationId"_L1);
    const Account* const account = m_store.account(agentId);
    Thread* const thread = m_store.thread(conversationId.toString());
    if (!account || (thread && !account->serves(thread->conversation.productId)))
        return;
    if (type == "viewing"_L1 && (thread || conversationId.isNull()))
        m_live.setViewing(agentId, thread ? std::optional(thread->conversation.id) : std::nullopt);
    else if (type == "typing"_L1 && thread && object.value("preview"_L1).isString())
        m_desk.agentTyping(*thread, account->agent, object.value("preview"_L1).toString());
    else if (type == "read"_L1 && thread)
        m_desk.readByAgent(*thread);
}

/// A console that has just come up learns who is looking at what.
void DemoService::greet(const QString&)
{
    for (const QString& conversationId : m_live.viewedConversations())
        m_desk.announceViewers(conversationId);
}

} // namespace orvia::demo
