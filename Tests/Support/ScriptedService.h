#pragma once

#include "Support/ServerChannel.h"

#include <QObject>
#include <QUrl>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <vector>

class QTcpServer;

namespace orvia::test {

/// What the service does when a request has arrived.
struct ScriptedAnswer {
    enum class Ending {
        keepOpen, ///< the connection waits for the next request
        close,    ///< closed after the last byte
        reset,    ///< torn down without a farewell, after the last byte if there is one
        stall,    ///< stays open, nothing more is sent
        endless,  ///< the last kilobyte is repeated for as long as the client reads
    };

    int status = 200;
    Headers headers = {};
    QByteArray body = {};
    std::optional<QByteArray> raw = {}; ///< sent as it is in place of status line, headers and body
    Ending ending = Ending::keepOpen;
    std::chrono::milliseconds pause{0}; ///< before each byte of the body, which is sent alone then

    static ScriptedAnswer json(QByteArray body, int status = 200);
    static ScriptedAnswer redirect(QByteArray location, int status = 302);
    /// Bytes that need not be HTTP.
    static ScriptedAnswer rawBytes(QByteArray bytes, Ending ending = Ending::close);
    /// Announces @p missing bytes more than it sends, then closes.
    static ScriptedAnswer truncated(QByteArray body, qsizetype missing);
    static ScriptedAnswer stall();
    static ScriptedAnswer reset();
    /// Begins with @p head, then never ends.
    static ScriptedAnswer endless(QByteArray head);

private:
    friend class HTTPConnection;
    QByteArray bytes() const;
};

class HTTPConnection;

/// A request that waits until the test lets it be answered.
class HeldAnswer {
public:
    /// Whether the request has arrived and waits.
    bool isWaiting() const { return m_arrived && !m_answered; }
    /// Answers the request, at once or as soon as it arrives.
    void answer(ScriptedAnswer answer);

private:
    friend class ScriptedService;
    friend class HTTPConnection;
    void arrived(HTTPConnection* connection);

    QPointer<HTTPConnection> m_connection;
    std::optional<ScriptedAnswer> m_answer;
    bool m_arrived = false;
    bool m_answered = false;
};

/// A real HTTP/1.1 and WebSocket server on a loopback port that does what the test scripted, misbehaviour
/// included. It fails the test on a request for which nothing was scripted, and at its end on a scripted
/// answer that nobody asked for. An upgrade of /ws is accepted unless an answer is scripted for GET /ws.
class ScriptedService : public QObject {
    Q_OBJECT

public:
    /// Plain, or TLS with the certificate of that name.
    enum class Transport { plain, valid, selfSigned, expired, otherHost };
    using Handler = std::function<ScriptedAnswer(const ReceivedRequest&)>;

    explicit ScriptedService(Transport transport = Transport::plain);
    ~ScriptedService() override;

    /// The origin, http://127.0.0.1:port or https.
    QUrl url() const;

    /// Answers the next request of @p method and @p path (without query) that no earlier call answers.
    void answer(const QByteArray& method, const QByteArray& path, ScriptedAnswer answer);
    std::shared_ptr<HeldAnswer> hold(const QByteArray& method, const QByteArray& path);
    /// Answers every request of @p method and @p path for which no single answer is left.
    void always(const QByteArray& method, const QByteArray& path, Handler handler);
    void always(const QByteArray& method, const QByteArray& path, ScriptedAnswer answer);

    /// Every request so far in the order of arrival, without those that asked for a WebSocket.
    const std::vector<ReceivedRequest>& requests() const { return m_requests; }
    std::vector<ReceivedRequest> requests(const QByteArray& method, const QByteArray& path) const;
    /// Every request for a WebSocket, accepted or not.
    const std::vector<ReceivedRequest>& upgradeRequests() const { return m_upgradeRequests; }

    /// Every WebSocket so far, open or not, in the order of arrival.
    const std::vector<std::shared_ptr<ServerChannel>>& channels() const { return m_channels; }
    /// The newest WebSocket, none before the first.
    std::shared_ptr<ServerChannel> channel() const;
    /// Whether new WebSockets answer pings. They do at first.
    void setAnswersPings(bool answers) { m_answersPings = answers; }

    /// An endless answer that was read so far is never given up by the client; it stalls from here.
    static constexpr qint64 endlessEnough = 256 * 1024 * 1024;
    /// How many bytes of endless answers have gone out to clients.
    qint64 endlessBytes() const { return m_endlessBytes; }

    /// Shows another certificate to new connections. Not for a plain transport.
    void present(Transport transport);
    /// From now on nothing that arrives on the connections of this moment is received or acknowledged, as
    /// when the machine at the other end is gone or the way to it. New connections work.
    void vanish();
    /// Tears every connection down and refuses new ones until @c resume, which takes the same port.
    void pause();
    void resume();

private:
    friend class HTTPConnection;
    using Route = std::pair<QByteArray, QByteArray>;
    using Step = std::shared_ptr<HeldAnswer>;

    void listen(quint16 port);
    void accept();
    /// Decides about @p request; the step answers it now or later. None leaves an upgrade to be accepted.
    Step stepFor(const ReceivedRequest& request);
    void upgrade(HTTPConnection& connection, const ReceivedRequest& request);

    Transport m_transport;
    std::unique_ptr<QTcpServer> m_server;
    quint16 m_port = 0;
    std::map<Route, std::deque<Step>> m_steps;
    std::map<Route, Handler> m_handlers;
    std::vector<ReceivedRequest> m_requests;
    std::vector<ReceivedRequest> m_upgradeRequests;
    std::vector<std::shared_ptr<ServerChannel>> m_channels;
    bool m_answersPings = true;
    qint64 m_endlessBytes = 0;
};

} // namespace orvia::test
