#include "Support/ScriptedService.h"

#include "Support/HTTPConnection.h"
#include "Support/ServerCertificate.h"

#include <QSslServer>

#include <gtest/gtest.h>

namespace orvia::test {

using namespace Qt::StringLiterals;

ScriptedAnswer ScriptedAnswer::json(QByteArray body, int status)
{
    return {.status = status, .headers = {{"Content-Type", "application/json"}}, .body = std::move(body)};
}

ScriptedAnswer ScriptedAnswer::redirect(QByteArray location, int status)
{
    return {.status = status, .headers = {{"Location", std::move(location)}}};
}

ScriptedAnswer ScriptedAnswer::rawBytes(QByteArray bytes, Ending ending)
{
    return {.raw = std::move(bytes), .ending = ending};
}

ScriptedAnswer ScriptedAnswer::truncated(QByteArray body, qsizetype missing)
{
    const QByteArray length = QByteArray::number(body.size() + missing);
    return rawBytes("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " + length
                    + "\r\n\r\n" + body);
}

ScriptedAnswer ScriptedAnswer::stall()
{
    return rawBytes({}, Ending::stall);
}

ScriptedAnswer ScriptedAnswer::reset()
{
    return rawBytes({}, Ending::reset);
}

ScriptedAnswer ScriptedAnswer::endless(QByteArray head)
{
    return rawBytes(head + QByteArray(1024, 'x'), Ending::endless);
}

QByteArray ScriptedAnswer::bytes() const
{
    if (raw)
        return *raw;
    QByteArray bytes = "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\n";
    for (const auto& [name, value] : headers)
        bytes += name + ": " + value + "\r\n";
    if (status != 204)
        bytes += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    return bytes + "\r\n" + body;
}

void HeldAnswer::answer(ScriptedAnswer answer)
{
    m_answer = std::move(answer);
    if (m_arrived)
        arrived(m_connection);
}

void HeldAnswer::arrived(HTTPConnection* connection)
{
    m_arrived = true;
    m_connection = connection;
    if (!m_answer || m_answered)
        return;
    m_answered = true;
    if (m_connection)
        m_connection->send(*m_answer);
}

ScriptedService::ScriptedService(Transport transport)
    : m_transport(transport)
{
    if (transport != Transport::plain) {
        m_server = std::make_unique<QSslServer>();
        present(transport);
    } else {
        m_server = std::make_unique<QTcpServer>();
    }
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, &ScriptedService::accept);
    listen(0);
}

ScriptedService::~ScriptedService()
{
    for (const auto& [route, steps] : m_steps) {
        if (!steps.empty()) {
            ADD_FAILURE() << "nobody asked for " << route.first.constData() << ' ' << route.second.constData()
                          << ", " << steps.size() << " scripted answers are left";
        }
    }
}

QUrl ScriptedService::url() const
{
    QUrl url;
    url.setScheme(m_transport == Transport::plain ? u"http"_s : u"https"_s);
    url.setHost(u"127.0.0.1"_s);
    url.setPort(m_port);
    return url;
}

void ScriptedService::answer(const QByteArray& method, const QByteArray& path, ScriptedAnswer answer)
{
    hold(method, path)->answer(std::move(answer));
}

std::shared_ptr<HeldAnswer> ScriptedService::hold(const QByteArray& method, const QByteArray& path)
{
    return m_steps[{method, path}].emplace_back(std::make_shared<HeldAnswer>());
}

void ScriptedService::always(const QByteArray& method, const QByteArray& path, Handler handler)
{
    m_handlers[{method, path}] = std::move(handler);
}

void ScriptedService::always(const QByteArray& method, const QByteArray& path, ScriptedAnswer answer)
{
    always(method, path, [answer = std::move(answer)](const ReceivedRequest&) { return answer; });
}

std::vector<ReceivedRequest> ScriptedService::requests(const QByteArray& method, const QByteArray& path) const
{
    std::vector<ReceivedRequest> found;
    for (const ReceivedRequest& request : m_requests) {
        if (request.method == method && request.path() == path)
            found.push_back(request);
    }
    return found;
}

std::shared_ptr<ServerChannel> ScriptedService::channel() const
{
    return m_channels.empty() ? nullptr : m_channels.back();
}

void ScriptedService::present(Transport transport)
{
    const std::map<Transport, Certificate> certificates{{Transport::valid, Certificate::valid},
                                                        {Transport::selfSigned, Certificate::selfSigned},
                                                        {Transport::expired, Certificate::expired},
                                                        {Transport::otherHost, Certificate::otherHost}};
    static_cast<QSslServer&>(*m_server).setSslConfiguration(serverConfiguration(certificates.at(transport)));
}

void ScriptedService::vanish()
{
    for (const HTTPConnection* connection : findChildren<HTTPConnection*>(Qt::FindDirectChildrenOnly))
        connection->vanish();
    for (const auto& channel : m_channels)
        channel->vanish();
}

void ScriptedService::pause()
{
    m_server->close();
    qDeleteAll(findChildren<HTTPConnection*>(Qt::FindDirectChildrenOnly));
    for (const auto& channel : m_channels)
        channel->reset();
}

void ScriptedService::resume()
{
    listen(m_port);
}

void ScriptedService::listen(quint16 port)
{
    const bool listening = m_server->listen(QHostAddress::LocalHost, port);
    EXPECT_TRUE(listening) << m_server->errorString().toStdString();
    m_port = m_server->serverPort();
}

void ScriptedService::accept()
{
    while (QTcpSocket* socket = m_server->nextPendingConnection())
        new HTTPConnection(socket, this);
}

ScriptedService::Step ScriptedService::stepFor(const ReceivedRequest& request)
{
    const bool upgrade = request.asksForWebSocket();
    (upgrade ? m_upgradeRequests : m_requests).push_back(request);

    const Route route{request.method, request.path()};
    if (auto& steps = m_steps[route]; !steps.empty()) {
        const Step step = steps.front();
        steps.pop_front();
        return step;
    }
    auto step = std::make_shared<HeldAnswer>();
    if (const auto handler = m_handlers.find(route); handler != m_handlers.end()) {
        step->answer(handler->second(request));
        return step;
    }
    if (upgrade && request.path() == "/ws")
        return nullptr;
    ADD_FAILURE() << "unexpected request: " << request.method.constData() << ' '
                  << request.target.constData();
    step->answer(ScriptedAnswer::json("{}", 500));
    return step;
}

void ScriptedService::upgrade(HTTPConnection& connection, const ReceivedRequest& request)
{
    m_channels.push_back(
        std::make_shared<ServerChannel>(connection.releaseSocket(), request, m_answersPings));
}

} // namespace orvia::test
