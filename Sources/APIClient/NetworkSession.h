#pragma once

#include <QByteArray>
#include <QCoro/QCoroTask>
#include <QFutureWatcher>
#include <QNetworkRequest>
#include <QObject>
#include <QPromise>
#include <QSharedPointer>
#include <QString>
#include <QThread>

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <type_traits>

namespace orvia {

/// The shared HTTP machinery behind every client value: connections, TLS, proxy. Follows redirects within the
/// origin only, verifies certificates, and bounds time and size of an answer. Used by the main thread; what
/// is sent, received and made of an answer is the work of other threads, so that an answer neither waits for
/// the interface nor holds it up.
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

    /// The bytes of an answer, wherever they were received. Copies share them.
    class Body {
    public:
        Body() = default;
        explicit Body(QByteArray gathered)
            : m_gathered(std::move(gathered))
            , m_bytes(m_gathered)
        {
        }
        Body(QSharedPointer<char> buffer, qsizetype size)
            : m_buffer(std::move(buffer))
            , m_bytes(m_buffer.data(), size)
        {
        }

        /// Valid as long as a copy of this body.
        QByteArrayView bytes() const { return m_bytes; }

    private:
        QByteArray m_gathered;
        QSharedPointer<char> m_buffer;
        QByteArrayView m_bytes; ///< of one of the two, whose bytes stay where they are when it is moved
    };

    /// What came back: a status and the whole body, or the platform's description of why nothing did.
    struct Answer {
        std::optional<int> status; ///< absent when the answer was not an HTTP response
        Body body;
        std::optional<QString> transportError;
    };

    /// Answers with a body from this size on are read by a worker, so that reading does not delay others.
    static constexpr qsizetype workerThreshold = 64 * 1024;

    explicit NetworkSession(QObject* parent = nullptr);
    NetworkSession(Limits limits, QObject* parent);
    ~NetworkSession() override;

    /// What a reading of answers makes of one.
    template <class Read>
    using ReadingOf = std::decay_t<std::invoke_result_t<Read&, Answer>>;

    /// Performs @p request with @p method, waits for the whole answer and answers what @p read makes of it.
    /// @p read is called on another thread; it must not throw and shares nothing with its caller that
    /// changes. @p stop ends the request before its answer has come; what it then answers says nothing.
    template <class Read>
    [[nodiscard]] QCoro::Task<ReadingOf<Read>> perform(QNetworkRequest request, QByteArray method,
                                                       std::optional<QByteArray> body, Read read,
                                                       std::stop_token stop = {});

Q_SIGNALS:
    void ending(QPrivateSignal);

private:
    class Exchange;
    using Receiver = std::function<void(Answer)>;

    struct Request {
        QNetworkRequest head;
        QByteArray method;
        std::optional<QByteArray> body;
        std::stop_token stop;
    };

    /// Resumes the awaiting coroutine when its watcher has finished, or the session ends. Unlike a watcher
    /// of the coroutine library it needs no further turn of the event loop, which may never come.
    struct Arrival {
        QFutureWatcherBase& watcher;

        bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<> waiting) const
        {
            connect(
                &watcher, &QFutureWatcherBase::finished, &watcher, [waiting] { waiting.resume(); },
                Qt::SingleShotConnection);
        }
        void await_resume() const {}
    };

    /// Calls @p receive on another thread, unless the session ends before.
    void send(Request request, Receiver receive);
    static Answer canceled();

    QThread m_thread;
    Exchange* m_exchange; ///< belongs to the thread and ends with it
};

template <class Read>
QCoro::Task<NetworkSession::ReadingOf<Read>>
NetworkSession::perform(QNetworkRequest request, QByteArray method, std::optional<QByteArray> body, Read read,
                        std::stop_token stop)
{
    using Result = ReadingOf<Read>;
    if (!m_thread.isRunning())
        co_return read(canceled());

    const auto promise = std::make_shared<QPromise<std::shared_ptr<Result>>>();
    promise->start();
    auto* const watcher = new QFutureWatcher<std::shared_ptr<Result>>(this);
    watcher->setFuture(promise->future());
    connect(this, &NetworkSession::ending, watcher, &QFutureWatcherBase::finished);
    Request sent{request, std::move(method), std::move(body), std::move(stop)};
    send(std::move(sent), [promise, read](Answer answer) mutable {
        promise->addResult(std::make_shared<Result>(read(std::move(answer))));
        promise->finish();
    });
    Arrival arrival{*watcher};
    co_await arrival;

    const QFuture<std::shared_ptr<Result>> reading = watcher->future();
    watcher->deleteLater();
    if (!reading.isFinished() || !reading.isResultReadyAt(0))
        co_return read(canceled());
    const std::shared_ptr<Result> result = reading.result();
    co_return std::move(*result);
}

} // namespace orvia
