#include "StillImageThumbnails.h"

#include <EditorModel/Host.h>

#include <QDateTime>
#include <QFileInfo>
#include <QImageReader>
#include <QMutex>
#include <QPainter>

#include <glog/logging.h>

#include <algorithm>
#include <climits>

namespace Thumbnail {

QImage fitFrame(const QImage& frame, QSize size, int resizeMode, QColor padding)
{
    if (frame.isNull() || size.isEmpty())
        return QImage();
    if (resizeMode == Qt::IgnoreAspectRatio)
        return frame.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (resizeMode == Qt::KeepAspectRatioByExpanding) {
        const QImage scaled = frame.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
        return scaled.copy((scaled.width() - size.width()) / 2, (scaled.height() - size.height()) / 2, size.width(),
                           size.height());
    }
    const QImage scaled = frame.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (padding.alpha() == 0 || scaled.size() == size)
        return scaled;
    QImage padded(size, QImage::Format_ARGB32_Premultiplied);
    padded.fill(padding);
    QPainter painter(&padded);
    painter.drawImage((size.width() - scaled.width()) / 2, (size.height() - scaled.height()) / 2, scaled);
    return padded;
}

namespace {

struct StillRequest
{
    QString path;
    QSize size;
    int resizeMode = Qt::KeepAspectRatioByExpanding;
    QColor padding;
};

// The picture a thumbnail record asks for, if it names the only stream of a still file.
bool stillRequestOf(const Object& thumbnail, StillRequest* request)
{
    const auto& [key, type] = thumbnail.resource();
    if (type != Resource::Video)
        return false;
    const QString text = QString::fromStdString(key);
    const QLatin1String separator(":v:");
    const int at = text.lastIndexOf(separator);
    if (at <= 0 || text.mid(at + separator.size()) != QLatin1String("0"))
        return false;
    request->path = text.left(at);
    request->size = QSize(thumbnail.width(), thumbnail.height());
    request->resizeMode = thumbnail.resizeMode();
    request->padding = QColor::fromRgba(thumbnail.paddingColor());
    return true;
}

QImage decodeStill(const StillRequest& request)
{
    QImageReader reader(request.path);
    reader.setAutoTransform(true);
    const QSize full = reader.size();
    // Decoders that scale while decoding (JPEG) do so, to no less than the thumbnail needs.
    if (full.isValid() && reader.supportsOption(QImageIOHandler::ScaledSize)) {
        const QSize scaled = full.scaled(request.size, Qt::KeepAspectRatioByExpanding);
        if (scaled.width() < full.width() && scaled.height() < full.height())
            reader.setScaledSize(scaled);
    }
    return fitFrame(reader.read(), request.size, request.resizeMode, request.padding);
}

} // namespace

// How a worker reaches the provider: through the receiver, cleared under the lock when the
// provider goes, so a late decode finds nobody to post to.
struct StillImageProvider::Channel
{
    QMutex mutex;
    QObject* receiver = nullptr;
};

StillImageProvider::StillImageProvider(Model::Host& host, qint64 cacheBytes)
    : m_host(&host), m_channel(std::make_shared<Channel>()), m_cache(int(qBound<qint64>(1, cacheBytes / 1024, INT_MAX)))
{
    m_channel->receiver = &m_context;
}

StillImageProvider::~StillImageProvider()
{
    {
        QMutexLocker lock(&m_channel->mutex);
        m_channel->receiver = nullptr;
    }
    m_pool.clear();
    m_pool.waitForDone();
}

int StillImageProvider::pendingCount() const { return int(m_pending.size()); }

int StillImageProvider::decodeCount() const { return m_decodes; }

void StillImageProvider::request(const Object* thumbnail)
{
    if (!thumbnail || m_pending.count(thumbnail))
        return;
    StillRequest still;
    const QFileInfo file(stillRequestOf(*thumbnail, &still) ? still.path : QString());
    m_order.push_back(thumbnail);
    if (still.size.isEmpty() || !file.isFile()) {
        m_pending.emplace(thumbnail, Key());
        answerLater(thumbnail, QImage());
        return;
    }
    // A file rewritten since it was decoded is decoded again.
    const Key key = QStringLiteral("%1|%2x%3|%4|%5|%6|%7")
                        .arg(still.path)
                        .arg(still.size.width())
                        .arg(still.size.height())
                        .arg(still.resizeMode)
                        .arg(thumbnail->paddingColor())
                        .arg(file.lastModified().toMSecsSinceEpoch())
                        .arg(file.size());
    m_pending.emplace(thumbnail, key);
    if (const QImage* cached = m_cache.object(key)) {
        answerLater(thumbnail, *cached);
        return;
    }
    auto waiting = m_decoding.find(key);
    if (waiting != m_decoding.end()) {
        waiting->second.push_back(thumbnail);
        return;
    }
    m_decoding[key].push_back(thumbnail);
    ++m_decodes;
    std::shared_ptr<Channel> channel = m_channel;
    m_pool.start(QRunnable::create([this, channel, key, still] {
        const QImage image = decodeStill(still);
        QMutexLocker lock(&channel->mutex);
        if (channel->receiver)
            QMetaObject::invokeMethod(
                channel->receiver, [this, key, image] { decoded(key, image); }, Qt::QueuedConnection);
    }));
}

void StillImageProvider::cancel(const Object* thumbnail)
{
    const auto found = m_pending.find(thumbnail);
    if (found == m_pending.end())
        return;
    const auto waiting = m_decoding.find(found->second);
    if (waiting != m_decoding.end()) {
        auto& records = waiting->second;
        records.erase(std::remove(records.begin(), records.end(), thumbnail), records.end());
    }
    m_pending.erase(found);
    m_ready.erase(thumbnail);
    // Frames that waited for this one may go now.
    if (!m_order.empty() && m_order.front() == thumbnail)
        answerLater(nullptr, QImage());
}

void StillImageProvider::decoded(const Key& key, const QImage& image)
{
    if (!image.isNull())
        m_cache.insert(key, new QImage(image), int(qMax<qint64>(1, image.sizeInBytes() / 1024)));
    const auto waiting = m_decoding.find(key);
    if (waiting == m_decoding.end())
        return;
    const std::vector<const Object*> records = std::move(waiting->second);
    m_decoding.erase(waiting);
    for (const Object* thumbnail : records)
        answerLater(thumbnail, image);
}

void StillImageProvider::answerLater(const Object* thumbnail, const QImage& image)
{
    if (thumbnail)
        m_ready[thumbnail] = image;
    if (m_flushQueued)
        return;
    m_flushQueued = true;
    QMetaObject::invokeMethod(
        &m_context, [this] { flushAnswers(); }, Qt::QueuedConnection);
}

void StillImageProvider::flushAnswers()
{
    m_flushQueued = false;
    while (!m_order.empty()) {
        const Object* thumbnail = m_order.front();
        // A record cancelled (removed) meanwhile is not answered.
        if (!m_pending.count(thumbnail)) {
            m_order.pop_front();
            continue;
        }
        const auto ready = m_ready.find(thumbnail);
        if (ready == m_ready.end())
            return; // the frame asked for first is not decoded yet
        const QImage image = std::move(ready->second);
        m_ready.erase(ready);
        m_pending.erase(thumbnail);
        m_order.pop_front();
        if (m_host)
            m_host->answerThumbnail(thumbnail, image);
    }
}

} // namespace Thumbnail
