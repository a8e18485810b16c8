#include "APIClient/NetworkSession.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QThreadPool>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

/// An announced length is only believed so far. Memory that nothing arrives for is never touched.
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

/// The buffer into which the toolkit receives a body that announced its length and is not compressed, or
/// null: other bodies come in pieces that are to be gathered. See QHttpThreadDelegate.
QSharedPointer<char> bufferOf(const QNetworkReply& reply)
{
    return reply.attribute(QNetworkRequest::DownloadBufferAttribute).value<QSharedPointer<char>>();
}

/// Whether the connection ended before an answer began. A service may close a connection that it has no use
/// for at the moment in which the next request is sent on it.
bool isUnanswered(const QNetworkReply& reply)
{
    return reply.error() == QNetworkReply::RemoteHostClosedError
           && !reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
}

/// A request under way.
struct Transfer {
    explicit Transfer(QNetworkReply* answering)
        : reply(answering)
    {
    }

    QNetworkReply* const reply;
    QByteArray received; ///< taken over as it arrives
    bool isTooLarge = false;
    std::optional<std::stop_callback<std::function<void()>>> onStop; ///< until the end
};

} // namespace

/// What lives in the session's own thread.
class NetworkSession::Exchange : public QObject {
public:
    explicit Exchange(Limits limits)
        : m_limits(limits)
    {
    }

    void perform(Request request, const Receiver& receive);

private:
    QNetworkAccessManager& manager();
    /// @p mayRepeat says whether the request is sent once more when it stays unanswered.
    void attempt(const Request& request, const Receiver& receive, bool mayRepeat);
    QNetworkReply* start(const Request& request);
    void receivePart(Transfer& transfer) const;
    static Answer finish(Transfer& transfer);

    const Limits m_limits;
    QNetworkAccessManager* m_manager = nullptr; ///< made in the thread
};

void NetworkSession::Exchange::perform(Request request, const Receiver& receive)
{
    request.head.setAttribute(QNetworkRequest::MaximumDownloadBufferSizeAttribute, largestReservation);
    // Only what changes nothing: whether the service has acted on the request is not known (RFC 9110, 9.2.2).
    attempt(request, receive, request.method == "GET");
}

void NetworkSession::Exchange::attempt(const Request& request, const Receiver& receive, bool mayRepeat)
{
    const auto transfer = std::make_shared<Transfer>(start(request));
    QNetworkReply* const reply = transfer->reply;
    connect(reply, &QNetworkReply::readyRead, this, [this, transfer] { receivePart(*transfer); });
    connect(reply, &QNetworkReply::finished, this, [=, this] {
        transfer->onStop.reset();
        reply->deleteLater();
        if (mayRepeat && isUnanswered(*reply)) {
            attempt(request, receive, false);
            return;
        }
        Answer answer = finish(*transfer);
        if (answer.body.bytes().size() < workerThreshold)
            receive(std::move(answer));
        else
            QThreadPool::globalInstance()->start(
                [receive, answer = std::move(answer)]() mutable { receive(std::move(answer)); });
    });
    // Called in the thread that asks for it.
    transfer->onStop.emplace(request.stop, [reply] {
        QMetaObject::invokeMethod(reply, &QNetworkReply::abort, Qt::QueuedConnection);
    });
}

QNetworkAccessManager& NetworkSession::Exchange::manager()
{
    if (!m_manager) {
        m_manager = new QNetworkAccessManager(this);
        m_manager->setRedirectPolicy(QNetworkRequest::SameOriginRedirectPolicy);
        m_manager->setTransferTimeout(static_cast<int>(m_limits.timeout.count()));
    }
    return *m_manager;
}

QNetworkReply* NetworkSession::Exchange::start(const Request& request)
{
    // A GET or DELETE without a body must not carry a length either, which a custom request would add.
    if (request.method == "GET")
        return manager().get(request.head);
    if (request.method == "DELETE" && !request.body)
        return manager().deleteResource(request.head);
    return manager().sendCustomRequest(request.head, request.method, request.body.value_or(QByteArray()));
}

void NetworkSession::Exchange::receivePart(Transfer& transfer) const
{
    transfer.isTooLarge = transfer.received.size() + transfer.reply->bytesAvailable() > m_limits.maxBodyBytes;
    if (transfer.isTooLarge)
        transfer.reply->abort();
    else if (!bufferOf(*transfer.reply))
        takeOver(*transfer.reply, transfer.received);
}

NetworkSession::Answer NetworkSession::Exchange::finish(Transfer& transfer)
{
    QNetworkReply& reply = *transfer.reply;
    Answer answer;
    if (transfer.isTooLarge) {
        answer.transportError = NetworkSession::tr("The answer is too large.");
    } else if (reply.error() == QNetworkReply::OperationCanceledError) {
        // The platform's own words for it would name a cancellation that nobody asked for.
        answer.transportError = NetworkSession::tr("The request timed out.");
    } else if (!isHTTPResponse(reply)) {
        answer.transportError = reply.errorString();
    } else {
        const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
        if (status.isValid())
            answer.status = status.toInt();
        if (QSharedPointer<char> buffer = bufferOf(reply)) {
            answer.body = Body(std::move(buffer), reply.bytesAvailable());
        } else {
            takeOver(reply, transfer.received);
            answer.body = Body(std::move(transfer.received));
        }
    }
    return answer;
}

NetworkSession::NetworkSession(QObject* parent)
    : NetworkSession(Limits(), parent)
{
}

NetworkSession::NetworkSession(Limits limits, QObject* parent)
    : QObject(parent)
    , m_exchange(new Exchange(limits))
{
    m_exchange->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_exchange, &QObject::deleteLater);
    m_thread.setObjectName("network"_L1);
    m_thread.start();
}

NetworkSession::~NetworkSession()
{
    m_thread.quit();
    m_thread.wait();
    Q_EMIT ending(QPrivateSignal());
}

void NetworkSession::send(Request request, Receiver receive)
{
    QMetaObject::invokeMethod(m_exchange,
                              [exchange = m_exchange, request = std::move(request),
                               receive = std::move(receive)] { exchange->perform(request, receive); });
}

NetworkSession::Answer NetworkSession::canceled()
{
    return {.status = {}, .body = {}, .transportError = u"Operation canceled"_s};
}

} // namespace orvia
