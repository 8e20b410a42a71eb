#include "ThumbnailFrames.h"

#include <QImageReader>
#include <QPainter>

namespace Thumbnail {

FrameProvider::~FrameProvider() = default;

bool ImageFrameProvider::accepts(const FrameRequest& request) const
{
    // Pictures have one video stream and nothing else.
    if (request.type != 1 || request.streamIndex != 0)
        return false;
    return !QImageReader::imageFormat(request.path).isEmpty();
}

bool ImageFrameProvider::isStill(const FrameRequest&) const { return true; }

QImage ImageFrameProvider::frame(const FrameRequest& request) const
{
    QImageReader reader(request.path);
    reader.setAutoTransform(true);
    const QSize full = reader.size();
    // Decoders that can scale while decoding (JPEG) do so; the frame stays at least as
    // large as the thumbnail so the final fit loses nothing.
    if (full.isValid() && request.size.isValid() && reader.supportsOption(QImageIOHandler::ScaledSize)) {
        const QSize scaled = full.scaled(request.size, Qt::KeepAspectRatioByExpanding);
        if (scaled.width() < full.width() && scaled.height() < full.height())
            reader.setScaledSize(scaled);
    }
    return reader.read();
}

QImage fitFrame(const QImage& frame, QSize size, Fit fit, const QColor& padding)
{
    if (frame.isNull() || size.isEmpty())
        return QImage();
    switch (fit) {
    case Fit::Stretch:
        return frame.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    case Fit::Crop: {
        const QImage scaled = frame.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
        return scaled.copy((scaled.width() - size.width()) / 2, (scaled.height() - size.height()) / 2,
                           size.width(), size.height());
    }
    case Fit::Pad:
        break;
    }
    const QImage scaled = frame.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (!padding.isValid() || scaled.size() == size)
        return scaled;
    QImage padded(size, QImage::Format_ARGB32_Premultiplied);
    padded.fill(padding);
    QPainter painter(&padded);
    painter.drawImage((size.width() - scaled.width()) / 2, (size.height() - scaled.height()) / 2, scaled);
    return padded;
}

} // namespace Thumbnail
