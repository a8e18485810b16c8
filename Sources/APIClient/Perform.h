#pragma once

#include "APIClient/APIClient.h"
#include "APIClient/NetworkSession.h"
#include "APIClient/Worker.h"
#include "Models/JSON/Decoding.h"
#include "Models/JSON/Encoding.h"

#include <QNetworkRequest>

/// The request routine, for the sources that define operations.
namespace orvia {

namespace api {

/// The body that the service sends with a non-success status.
struct ServerError {
    QString error;

    static constexpr auto fields() { return std::tuple{json::required("error", &ServerError::error)}; }
};

/// The URL of @p path under the origin: the origin's own path is dropped, its query survives an empty
/// @p query. Throws APIError when the origin is not a URL.
QUrl endpointURL(const QUrl& baseURL, const QString& path,
                 const std::vector<std::pair<QString, QString>>& query);

QNetworkRequest request(const QUrl& url, const std::optional<QString>& token,
                        const std::optional<QByteArray>& contentType);

/// The body of a successful answer; throws APIError for everything else.
QByteArray successfulBody(const NetworkSession::Answer& answer);

/// Bodies from this size on are decoded off the main thread, because decoding them could be felt.
inline constexpr qsizetype workerThreshold = 64 * 1024;

template <class Response>
std::optional<Response> decoded(const QByteArray& body)
{
    try {
        return json::decode<Response>(body);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

/// The record in the body of a successful answer; fails with APIError when it is none.
template <class Response>
QCoro::Task<Response> decodedAnswer(QByteArray body)
{
    std::optional<Response> response;
    if (body.size() < workerThreshold) {
        response = decoded<Response>(body);
    } else {
        auto decode = [body = std::move(body)] { return decoded<Response>(body); };
        response = co_await onWorker(std::move(decode));
    }
    if (!response)
        throw APIError(QStringLiteral("Could not decode server response"));
    co_return std::move(*response);
}

} // namespace api

template <class Response>
QCoro::Task<Response> APIClient::perform(QByteArray method, QString path, Query query,
                                         std::optional<QByteArray> bodyData, QByteArray contentType) const
{
    const QUrl url = api::endpointURL(baseURL, path, query);
    const QNetworkRequest request =
        api::request(url, token, bodyData ? std::optional(contentType) : std::nullopt);
    if (!urlSession)
        throw APIError(QStringLiteral("Network error: ") + QStringLiteral("Operation canceled"));
    // Nothing of this client is touched from here on: it may be gone.
    const NetworkSession::Answer answer = co_await urlSession->perform(request, method, std::move(bodyData));
    QByteArray body = api::successfulBody(answer);
    auto response = co_await api::decodedAnswer<Response>(std::move(body));
    co_return response;
}

template <class Response, class Body>
QCoro::Task<Response> APIClient::send(QByteArray method, QString path, Body body) const
{
    return perform<Response>(std::move(method), std::move(path), {}, APIJSON::encoder.encode(body),
                             QByteArrayLiteral("application/json"));
}

} // namespace orvia
