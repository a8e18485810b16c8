#include "DemoService/HTTPServer.h"

#include <QHttpServerRequest>
#include <QMetaEnum>
#include <QUrl>

namespace orvia::demo {

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView livePath("/ws");

QString tokenOf(const QUrl& url)
{
    return QUrlQuery(url).queryItemValue(u"token"_s, QUrl::FullyDecoded);
}

bool isUpgrade(const QHttpServerRequest& request)
{
    return request.url().path() == livePath
           && request.value("upgrade").compare("websocket", Qt::CaseInsensitive) == 0;
}

void write(QHttpServerResponder& responder, const Answer& answer)
{
    responder.write(answer.body,
                    {{"Content-Type", answer.contentType},
                     {"Cache-Control", "no-store"},
                     {"X-Content-Type-Options", "nosniff"}},
                    static_cast<QHttpServerResponder::StatusCode>(answer.status));
}

Request requestFrom(const QHttpServerRequest& request)
{
    const auto methods = QMetaEnum::fromType<QHttpServerRequest::Method>();
    Request plain;
    plain.method = QByteArray(methods.valueToKey(static_cast<int>(request.method()))).toUpper();
    plain.path = request.url().path(QUrl::FullyDecoded);
    plain.query = QUrlQuery(request.url());
    plain.contentType = request.value("content-type");
    plain.authorization = request.value("authorization");
    plain.body = request.body();
    return plain;
}

} // namespace

HTTPServer::HTTPServer(QObject* parent)
    : QAbstractHttpServer(parent)
{
    connect(this, &QAbstractHttpServer::newWebSocketConnection, this, &HTTPServer::acceptUpgrades);
}

void HTTPServer::setHolding(bool holding)
{
    m_holding = holding;
    if (holding)
        return;
    for (Held& held : std::exchange(m_held, {})) {
        // The asking side may have gone meanwhile, and its socket with it.
        if (held.socket)
            write(held.responder, held.answer);
    }
}

bool HTTPServer::handleRequest(const QHttpServerRequest& request, QTcpSocket* socket)
{
    // The base class upgrades a request that counts as handled; one that does not is refused below.
    if (isUpgrade(request))
        return mayUpgrade(tokenOf(request.url()));

    Answer answer = onRequest(requestFrom(request));
    QHttpServerResponder responder = makeResponder(request, socket);
    if (m_holding)
        m_held.push_back({socket, std::move(responder), std::move(answer)});
    else
        write(responder, answer);
    return true;
}

void HTTPServer::missingHandler(const QHttpServerRequest& request, QTcpSocket* socket)
{
    QHttpServerResponder responder = makeResponder(request, socket);
    write(responder, answerOf(Refusal(401, u"The token is not valid or has expired."_s)));
    socket->disconnectFromHost();
}

void HTTPServer::acceptUpgrades()
{
    while (hasPendingWebSocketConnections()) {
        auto socket = nextPendingWebSocketConnection();
        const QString token = tokenOf(socket->requestUrl());
        onUpgrade(std::move(socket), token);
    }
}

} // namespace orvia::demo
