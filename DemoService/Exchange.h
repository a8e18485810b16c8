#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrlQuery>

#include <exception>

namespace orvia::demo {

/// One HTTP request as the routes see it.
struct Request {
    QByteArray method; ///< upper case
    QString path;      ///< percent-decoded
    QUrlQuery query;
    QByteArray contentType;
    QByteArray authorization;
    QByteArray body;
    QStringList arguments; ///< what stands in the place of the route's placeholders, in their order

    /// The decoded value of query item @p name; a null text when there is none.
    QString queryValue(const QString& name) const { return query.queryItemValue(name, QUrl::FullyDecoded); }
};

/// What the service says to a request. Every answer of the interface is a JSON document.
struct Answer {
    int status = 200;
    QByteArray body = QByteArrayLiteral("{}");
    QByteArray contentType = QByteArrayLiteral("application/json");
};

/// Thrown by a route that refuses its request; becomes an answer with the error body {"error": text}.
class Refusal : public std::exception {
public:
    Refusal(int httpStatus, QString text)
        : status(httpStatus)
        , message(std::move(text))
        , m_utf8(message.toUtf8())
    {
    }

    const char* what() const noexcept override { return m_utf8.constData(); }

    int status;
    QString message;

private:
    QByteArray m_utf8;
};

/// The error body of @p refusal.
Answer answerOf(const Refusal& refusal);

} // namespace orvia::demo
