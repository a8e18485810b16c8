#include "APIClient/APIClient.h"

#include "APIClient/Perform.h"

namespace orvia {

using namespace Qt::StringLiterals;

APIClient::APIClient(QUrl base, std::optional<QString> bearer, NetworkSession* session)
    : baseURL(std::move(base))
    , token(std::move(bearer))
    , urlSession(session)
{
}

namespace api {

QUrl endpointURL(const QUrl& baseURL, const QString& path,
                 const std::vector<std::pair<QString, QString>>& query)
{
    if (baseURL.isEmpty() || !baseURL.isValid())
        throw APIError(u"Invalid server URL"_s);
    QUrl url = baseURL;
    url.setPath(path, QUrl::DecodedMode);
    if (!query.empty()) {
        // Encoded here and not by QUrlQuery, which leaves "+" alone: a service reads that as a space.
        QByteArray encoded;
        for (const auto& [name, value] : query) {
            if (!encoded.isEmpty())
                encoded += '&';
            encoded += QUrl::toPercentEncoding(name) + '=' + QUrl::toPercentEncoding(value);
        }
        url.setQuery(QString::fromLatin1(encoded), QUrl::StrictMode);
    }
    if (!url.isValid())
        throw APIError(u"Invalid server URL"_s);
    return url;
}

QNetworkRequest request(const QUrl& url, const std::optional<QString>& token,
                        const std::optional<QByteArray>& contentType)
{
    QNetworkRequest request(url);
    request.setRawHeader("Accept", "application/json");
    if (token)
        request.setRawHeader("Authorization", "Bearer " + token->toUtf8());
    if (contentType)
        request.setRawHeader("Content-Type", *contentType);
    return request;
}

QByteArrayView successfulBody(const NetworkSession::Answer& answer)
{
    if (answer.transportError)
        throw APIError(u"Network error: "_s + *answer.transportError);
    if (!answer.status)
        throw APIError(u"Invalid server response"_s);
    const int status = *answer.status;
    if (status < 200 || status > 299) {
        const auto error = decoded<ServerError>(answer.body.bytes());
        throw APIError(error ? error->error : u"Request failed (%1)"_s.arg(status), status);
    }
    return answer.body.bytes();
}

} // namespace api

} // namespace orvia
