#include "Views/ConversationDetailView/Transcript/AttachmentImages.h"

#include <QBuffer>
#include <QFutureWatcher>
#include <QImageReader>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QThreadPool>
#include <QtConcurrent>

#include <cmath>

namespace orvia {

using namespace Qt::StringLiterals;

namespace {

constexpr int transferTimeout = 60000;
constexpr int maxRedirects = 5;

/// Formats of photographs and screenshots. Vector and container formats stay out: they are programs more than
/// pictures.
bool isAcceptedFormat(const QByteArray& format)
{
    static constexpr std::array accepted{"png", "jpeg", "jpg", "gif", "webp", "bmp"};
    return std::any_of(accepted.begin(), accepted.end(), [&](const char* name) { return format == name; });
}

/// One picture is decoded at a time, however many processors there are, so that those that are small files
/// and large pictures never stand in memory together.
QThreadPool* decodingThread()
{
    static QThreadPool pool;
    pool.setMaxThreadCount(1);
    return &pool;
}

bool isFetchable(const QUrl& url)
{
    return url.isValid() && (url.scheme() == "http"_L1 || url.scheme() == "https"_L1);
}

} // namespace

AttachmentImages::AttachmentImages(QObject* parent)
    : AttachmentImages(Limits{}, parent)
{
}

AttachmentImages::AttachmentImages(Limits limits, QObject* parent)
    : QObject(parent)
    , m_limits(limits)
    , m_images(limits.cachedKilobytes)
{
    m_manager.setTransferTimeout(transferTimeout);
    m_manager.setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
}

AttachmentImages::~AttachmentImages() = default;

AttachmentImages::State AttachmentImages::request(const QUrl& url, qreal devicePixelRatio)
{
    const auto known = m_states.constFind(url);
    const bool evicted = known != m_states.constEnd() && *known == State::loaded && !m_images.contains(url);
    if (known != m_states.constEnd() && !evicted)
        return *known;
    if (!isFetchable(url)) {
        m_states.insert(url, State::failed);
        return State::failed;
    }
    m_states.insert(url, State::loading);
    // The newest wish goes first: it is what is on the screen now.
    m_waiting.prepend({url, devicePixelRatio});
    startNext();
    return State::loading;
}

QImage AttachmentImages::image(const QUrl& url) const
{
    const QImage* image = m_images.object(url);
    return image ? *image : QImage();
}

void AttachmentImages::startNext()
{
    while (m_running < m_limits.concurrentRequests && !m_waiting.isEmpty()) {
        const auto [url, ratio] = m_waiting.dequeue();
        start(url, ratio);
    }
}

void AttachmentImages::start(const QUrl& url, qreal devicePixelRatio)
{
    QNetworkRequest request(url);
    request.setMaximumRedirectsAllowed(maxRedirects);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setRawHeader("Accept", "image/*");
    QNetworkReply* reply = m_manager.get(request);
    ++m_running;
    connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply] { receive(*reply); });
    connect(reply, &QNetworkReply::downloadProgress, this, [this, reply] { receive(*reply); });
    connect(reply, &QNetworkReply::finished, this,
            [this, reply, url, devicePixelRatio] { finish(reply, url, devicePixelRatio); });
}

void AttachmentImages::receive(QNetworkReply& reply)
{
    const qint64 announced = reply.header(QNetworkRequest::ContentLengthHeader).toLongLong();
    if (std::max(announced, reply.bytesAvailable()) > m_limits.bytes)
        reply.abort();
}

void AttachmentImages::finish(QNetworkReply* reply, const QUrl& url, qreal devicePixelRatio)
{
    reply->deleteLater();
    const bool succeeded =
        reply->error() == QNetworkReply::NoError && reply->bytesAvailable() <= m_limits.bytes;
    if (!succeeded) {
        store(url, {});
        return;
    }
    auto* watcher = new QFutureWatcher<Decoded>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, url] {
        watcher->deleteLater();
        store(url, watcher->result());
    });
    watcher->setFuture(QtConcurrent::run(decodingThread(), &AttachmentImages::decode, reply->readAll(),
                                         m_limits.pixels, devicePixelRatio));
}

AttachmentImages::Decoded AttachmentImages::decode(const QByteArray& bytes, qint64 maxPixels,
                                                   qreal devicePixelRatio)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    if (!reader.canRead() || !isAcceptedFormat(reader.format()))
        return {};
    const QSize stored = reader.size();
    if (stored.isEmpty() || qint64(stored.width()) * stored.height() > maxPixels)
        return {};

    const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    const QSize seen = turned ? stored.transposed() : stored;
    QSize shown = seen;
    if (shown.width() > box.width() || shown.height() > box.height())
        shown = seen.scaled(box, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    const qreal ratio = std::max<qreal>(1, devicePixelRatio);
    const QSize wanted(static_cast<int>(std::ceil(shown.width() * ratio)),
                       static_cast<int>(std::ceil(shown.height() * ratio)));
    if (wanted.width() < seen.width() && wanted.height() < seen.height())
        reader.setScaledSize(turned ? wanted.transposed() : wanted);
    QImage image = reader.read();
    if (image.isNull())
        return {};
    return {image.convertToFormat(QImage::Format_ARGB32_Premultiplied), shown};
}

void AttachmentImages::store(const QUrl& url, const Decoded& decoded)
{
    // Only now may the next one begin: files that wait for their decoding fill memory too.
    --m_running;
    m_states.insert(url, decoded.image.isNull() ? State::failed : State::loaded);
    if (!decoded.image.isNull()) {
        m_sizes.insert(url, decoded.displaySize);
        const auto kilobytes = static_cast<int>(decoded.image.sizeInBytes() / 1024 + 1);
        m_images.insert(url, new QImage(decoded.image), kilobytes);
    }
    startNext();
    Q_EMIT changed(url);
}

} // namespace orvia
