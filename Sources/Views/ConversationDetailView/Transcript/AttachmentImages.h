#pragma once

#include <QCache>
#include <QHash>
#include <QImage>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QQueue>
#include <QUrl>

class QNetworkReply;

namespace orvia {

/// Fetches the pictures of a transcript and keeps the newest ones in memory. Pictures come from anywhere, so
/// the requests carry neither the agent's token nor cookies, and what comes back is bounded in bytes and
/// pixels and decoded on a worker thread, already scaled down to the size at which it shows. Main thread.
class AttachmentImages : public QObject {
    Q_OBJECT

public:
    /// The box that a picture fits into, in device-independent pixels.
    static constexpr QSize box{220, 180};

    struct Limits {
        qint64 bytes = 16 * 1024 * 1024;  ///< of one file
        qint64 pixels = 64 * 1024 * 1024; ///< of one picture before scaling
        int concurrentRequests = 4;       ///< fetched or waiting for their decoding
        int cachedKilobytes = 48 * 1024;  ///< of all decoded pictures
    };

    enum class State { loading, loaded, failed };

    explicit AttachmentImages(QObject* parent = nullptr);
    AttachmentImages(Limits limits, QObject* parent);
    ~AttachmentImages() override;

    /// What is known about the picture at @p url; starts to fetch it when nothing is.
    State request(const QUrl& url, qreal devicePixelRatio);
    /// The size at which the picture shows, empty until it is known. Stays known when the picture has left
    /// the cache.
    QSize displaySize(const QUrl& url) const { return m_sizes.value(url); }
    bool isLoading(const QUrl& url) const { return m_states.value(url, State::failed) == State::loading; }
    /// The decoded picture, null while there is none.
    QImage image(const QUrl& url) const;

Q_SIGNALS:
    /// The picture at @p url was loaded, or failed to.
    void changed(const QUrl& url);

private:
    struct Decoded {
        QImage image;
        QSize displaySize;
    };

    static Decoded decode(const QByteArray& bytes, qint64 maxPixels, qreal devicePixelRatio);
    void startNext();
    void start(const QUrl& url, qreal devicePixelRatio);
    void receive(QNetworkReply& reply);
    void finish(QNetworkReply* reply, const QUrl& url, qreal devicePixelRatio);
    void store(const QUrl& url, const Decoded& decoded);

    const Limits m_limits;
    QNetworkAccessManager m_manager;
    QHash<QUrl, State> m_states;
    QHash<QUrl, QSize> m_sizes;
    QCache<QUrl, QImage> m_images;
    QQueue<std::pair<QUrl, qreal>> m_waiting;
    int m_running = 0;
};

} // namespace orvia
