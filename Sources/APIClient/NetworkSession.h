#pragma once

#include <QByteArray>
#include <QCoro/QCoroTask>
#include <QNetworkAccessManager>
#include <QObject>
#include <QString>

#include <optional>

namespace orvia {

/// The shared HTTP machinery behind every client value: connections, TLS, proxy. Follows redirects within the
/// origin only, verifies certificates, and bounds time and size of an answer. Main thread.
///
/// Destroying it ends the requests under way as transport failures, so that the coroutines which wait for
/// them run to their end.
class NetworkSession : public QObject {
    Q_OBJECT

public:
    struct Limits {
        std::chrono::milliseconds timeout = std::chrono::seconds(60); ///< without any progress
        qint64 maxBodyBytes = 128 * 1024 * 1024;
    };

    /// What came back: a status and the whole body, or the platform's description of why nothing did.
    struct Answer {
        std::optional<int> status; ///< absent when the answer was not an HTTP response
        QByteArray body;
        std::optional<QString> transportError;
    };

    explicit NetworkSession(QObject* parent = nullptr);
    NetworkSession(Limits limits, QObject* parent);
    ~NetworkSession() override;

    /// Performs @p request with @p method and waits for the whole answer.
    [[nodiscard]] QCoro::Task<Answer> perform(QNetworkRequest request, QByteArray method,
                                              std::optional<QByteArray> body);

private:
    Limits m_limits;
    QNetworkAccessManager m_manager;
};

} // namespace orvia
