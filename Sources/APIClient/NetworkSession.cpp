#include "APIClient/NetworkSession.h"

#include <QCoro/QCoroNetworkReply>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// An announced length is only believed so far.
constexpr qint64 largestReservation = 16 * 1024 * 1024;

/// Whether the reply carries an HTTP response in full. Qt reports a status outside 200–299 as an error too,
/// and a redirect that must not be followed as one of the address that it names.
bool isHTTPResponse(const QNetworkReply& reply)
{
    const QNetworkReply::NetworkError error = reply.error();
    switch (error) {
    case QNetworkReply::NoError:
        return true;
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::InsecureRedirectError:
    case QNetworkReply::ProtocolUnknownError:
    case QNetworkReply::ProtocolInvalidOperationError:
        return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    case QNetworkReply::ProtocolFailure:
        return false;
    default:
        return error >= QNetworkReply::ContentAccessDenied;
    }
}

/// Moves what has arrived to the end of @p received, which gets room for the announced length at the first
/// time.
void takeOver(QNetworkReply& reply, QByteArray& received)
{
    const qint64 available = reply.bytesAvailable();
    if (received.isEmpty()) {
        const qint64 announced = reply.header(QNetworkRequest::ContentLengthHeader).toLongLong();
        received.reserve(std::max(available, std::min(announced, largestReservation)));
    }
    const qsizetype size = received.size();
    received.resize(size + available);
    const qint64 taken = reply.read(received.data() + size, available);
    received.truncate(size + std::max<qint64>(taken, 0));
}

} // namespace

NetworkSession::NetworkSession(QObject* parent)
    : NetworkSession(Limits(), parent)
{
}

NetworkSession::NetworkSession(Limits limits, QObject* parent)
    : QObject(parent)
    , m_limits(limits)
{
    m_manager.setRedirectPolicy(QNetworkRequest::SameOriginRedirectPolicy);
    m_manager.setTransferTimeout(static_cast<int>(limits.timeout.count()));
}

NetworkSession::~NetworkSession()
{
    const auto replies = m_manager.findChildren<QNetworkReply*>();
    for (QNetworkReply* reply : replies)
        reply->abort();
}

QCoro::Task<NetworkSession::Answer> NetworkSession::perform(QNetworkRequest request, QByteArray method,
                                                            std::optional<QByteArray> body)
{
    // A GET or DELETE without a body must not carry a length either, which a custom request would add.
    QNetworkReply* reply = nullptr;
    if (method == "GET")
        reply = m_manager.get(request);
    else if (method == "DELETE" && !body)
        reply = m_manager.deleteResource(request);
    else
        reply = m_manager.sendCustomRequest(request, method, body.value_or(QByteArray()));
    reply->setParent(&m_manager);

    // Taken over as it arrives: gathering a large body at its end would hold up the interface.
    QByteArray received;
    const qint64 maxBodyBytes = m_limits.maxBodyBytes;
    bool tooLarge = false;
    connect(reply, &QNetworkReply::readyRead, reply, [reply, maxBodyBytes, &received, &tooLarge] {
        tooLarge = received.size() + reply->bytesAvailable() > maxBodyBytes;
        if (tooLarge)
            reply->abort();
        else
            takeOver(*reply, received);
    });

    co_await reply;
    reply->deleteLater();

    Answer answer;
    if (tooLarge) {
        answer.transportError = tr("The answer is too large.");
    } else if (reply->error() == QNetworkReply::OperationCanceledError) {
        // The platform's own words for it would name a cancellation that nobody asked for.
        answer.transportError = tr("The request timed out.");
    } else if (!isHTTPResponse(*reply)) {
        answer.transportError = reply->errorString();
    } else {
        const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        if (status.isValid())
            answer.status = status.toInt();
        takeOver(*reply, received);
        answer.body = std::move(received);
    }
    co_return answer;
}

} // namespace orvia
