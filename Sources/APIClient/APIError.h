#pragma once

#include <QByteArray>
#include <QString>

#include <exception>
#include <optional>

namespace orvia {

/// The only error of the service client. Its user-facing description is @c message, unchanged.
class APIError : public std::exception {
public:
    QString message;
    std::optional<int> status; ///< the HTTP status of a non-success answer; absent for every other failure

    explicit APIError(QString text, std::optional<int> httpStatus = std::nullopt)
        : message(std::move(text))
        , status(httpStatus)
        , m_utf8(message.toUtf8())
    {
    }

    const char* what() const noexcept override { return m_utf8.constData(); }

    friend bool operator==(const APIError& left, const APIError& right)
    {
        return left.message == right.message && left.status == right.status;
    }

private:
    QByteArray m_utf8;
};

} // namespace orvia
