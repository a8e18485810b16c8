#pragma once

#include "DemoService/Desk.h"
#include "DemoService/Exchange.h"
#include "DemoService/FileShelf.h"
#include "DemoService/HTTPServer.h"
#include "DemoService/LiveChannel.h"
#include "DemoService/Store.h"

#include <QObject>
#include <QUrl>

#include <chrono>
#include <deque>
#include <memory>
#include <vector>

namespace orvia::demo {

class LoadGenerator;
class Router;
class ScriptedLife;

/// What the service holds and does by itself.
struct Options {
    quint64 seed = 1;        ///< the same seed gives the same records and the same life
    bool withRecords = true; ///< false starts with the team and its products, but without conversations
    bool lively = false;     ///< visitors and teammates act by themselves
    std::chrono::milliseconds beat = std::chrono::milliseconds(900); ///< of the scripted life
    int conversations = 0;                                           ///< so many more, generated
    int messages = 0;         ///< in the first generated conversation; the others have a few
    int eventsPerSecond = 0;  ///< on the live channel, on top of everything else
    bool keepsJournal = true; ///< of requests and frames
    Store::Clock clock = currentInstant;
};

/// The service's side of the wire contract on 127.0.0.1, in memory. Tests start it in their own process, act
/// as visitors and teammates through @c desk and read back what it was asked. Main thread.
class DemoService : public QObject {
    Q_OBJECT

public:
    /// The password of every account of the demo team.
    static QString password();
    static constexpr std::size_t longestJournal = 10'000;

    explicit DemoService(Options options = {}, QObject* parent = nullptr);
    ~DemoService() override;

    /// Listens on @p port of the loopback interface, on any free one for 0. False when that is not possible.
    bool listen(quint16 port = 0);
    /// Stops listening and breaks every connection. Afterwards @c listen may be called again.
    void stop();
    quint16 port() const { return m_port; }
    QUrl origin() const;

    // What the service knows, and acting in the place of visitors and teammates

    Store& store() { return m_store; }
    Desk& desk() { return m_desk; }
    LiveChannel& live() { return m_live; }
    FileShelf& files() { return m_files; }
    /// The thread, which must exist.
    Thread& thread(const QString& conversationId);
    /// A fresh token of the agent, who must exist.
    QString tokenOf(const QString& agentId);
    Message postAsVisitor(const QString& conversationId, const QString& body,
                          MessageVia via = MessageVia::chat);
    /// Any event, whatever it says, to every open channel.
    void emitEvent(const SocketEvent& event);

    // What the service was asked

    struct Frame {
        QString agentId;
        QByteArray text;
    };
    /// The latest requests, refused ones included, at most @c longestJournal.
    const std::deque<Request>& requests() const { return m_requests; }
    /// The latest frames that agents sent, at most @c longestJournal.
    const std::deque<Frame>& frames() const { return m_frames; }
    void clearJournal();

    /// While true, requests are carried out but not answered.
    void holdAnswers(bool hold) { m_server->setHolding(hold); }

private:
    void startServer();
    Answer answer(Request request);
    void receive(const QString& agentId, const QByteArray& frame);
    void greet(const QString& agentId);

    Options m_options;
    Store m_store;
    FileShelf m_files;
    LiveChannel m_live;
    Desk m_desk;
    std::unique_ptr<Router> m_router;
    std::unique_ptr<HTTPServer> m_server;
    std::unique_ptr<ScriptedLife> m_life;
    std::unique_ptr<LoadGenerator> m_load;
    quint16 m_port = 0;
    std::deque<Request> m_requests;
    std::deque<Frame> m_frames;
};

} // namespace orvia::demo
