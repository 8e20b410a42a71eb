#pragma once

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>

#include <memory>
#include <vector>

namespace Thumbnail {

// How a frame is fitted into the requested thumbnail size.
enum class Fit
{
    Stretch = 0, // fill the size exactly, ignoring the aspect ratio
    Crop = 1,    // keep the aspect ratio and fill the size, cutting off what sticks out
    Pad = 2,     // keep the aspect ratio inside the size; margins get the padding colour
};

// What a provider is asked for: the frame of one stream of a file at a time.
struct FrameRequest
{
    QString path;
    int type = 0;       // Resource::Type of the stream: 1 video, 2 audio
    int streamIndex = 0;
    qint64 time = 0;
    qint64 resourceDuration = 0;
    QSize size;         // the thumbnail size; a provider may decode at about this size
};

// Draws frames of the media files it knows. The thumbnail service asks its providers in
// the order they were installed; the first that accepts a file draws its frames. A media
// engine adds video frames by installing a provider of its own.
class FrameProvider
{
public:
    virtual ~FrameProvider();

    // Whether this provider draws the frames of `request` (GUI thread, must be quick).
    virtual bool accepts(const FrameRequest& request) const = 0;
    // True when every time of the stream shows the same frame (a still picture), so one
    // decoded frame serves every time.
    virtual bool isStill(const FrameRequest& request) const = 0;
    // Decodes the frame, at least as large as request.size where the source allows, or a
    // null image when the file cannot be read. Runs on a worker thread, several at once.
    virtual QImage frame(const FrameRequest& request) const = 0;
};

// Still pictures in every format Qt's image plugins read.
class ImageFrameProvider : public FrameProvider
{
public:
    bool accepts(const FrameRequest& request) const override;
    bool isStill(const FrameRequest& request) const override;
    QImage frame(const FrameRequest& request) const override;
};

// Scales `frame` into `size` as `fit` says. `padding` fills the margins of Fit::Pad; with an
// invalid colour the result is just the scaled frame, smaller than `size` on one side.
QImage fitFrame(const QImage& frame, QSize size, Fit fit, const QColor& padding);

} // namespace Thumbnail
