#pragma once

#include "APIClient/APIClient.h"
#include "APIClient/NetworkSession.h"
#include "APIClient/Outcome.h"
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

/// The body of a successful @p answer, valid as long as that; throws APIError for everything else.
QByteArrayView successfulBody(const NetworkSession::Answer& answer);

template <class Response>
std::optional<Response> decoded(QByteArrayView body)
{
    try {
        return json::decode<Response>(body);
    } catch (const DecodingError&) {
        return std::nullopt;
    }
}

/// The record in the body of a successful answer, or why there is none.
template <class Response>
Outcome<Response> responseIn(const NetworkSession::Answer& answer)
{
    Outcome<Response> outcome;
    try {
        outcome.answer = decoded<Response>(successfulBody(answer));
        if (!outcome.answer)
            outcome.failure.emplace(QStringLiteral("Could not decode server response"));
    } catch (const APIError& error) {
        outcome.failure = error;
    }
    return outcome;
}

} // namespace api

template <class Response>
QCoro::Task<Response> APIClient::perform(QByteArray method, QString path, Query query,
                                         std::optional<QByteArray> bodyData, QByteArray contentType,
                                         std::stop_token stop) const
{
    const QUrl url = api::endpointURL(baseURL, path, query);
    const QNetworkRequest request =
        api::request(url, token, bodyData ? std::optional(contentType) : std::nullopt);
    if (!urlSession)
        throw APIError(QStringLiteral("Network error: ") + QStringLiteral("Operation canceled"));
    // Nothing of this client is touched from here on: it may be gone.
    Outcome<Response> outcome = co_await urlSession->perform(request, std::move(method), std::move(bodyData),
                                                             api::responseIn<Response>, std::move(stop));
    if (outcome.failure)
        throw APIError(std::move(*outcome.failure));
    co_return std::move(*outcome.answer);
}

template <class Response, class Body>
QCoro::Task<Response> APIClient::send(QByteArray method, QString path, Body body) const
{
    return perform<Response>(std::move(method), std::move(path), {}, APIJSON::encoder.encode(body),
                             QByteArrayLiteral("application/json"));
}

} // namespace orvia
