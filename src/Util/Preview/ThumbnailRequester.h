#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>

#include <QColor>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPixmap>
#include <QSize>

#include <memory>
#include <string>
#include <tuple>

namespace Util {

// Asks the editor's thumbnail service, through the bus, for frames of one resource (a
// stream named by Resource::encode) at given times, and hands each finished frame over
// through thumbnailReady(), from the event loop, in the order the service answers. A frame
// the service cannot draw arrives as a null pixmap. Nothing is asked for until a size of at
// least 1 x 1 is set.
class EDITORUTIL_EXPORT ThumbnailRequester : public QObject
{
    Q_OBJECT

public:
    // How a frame is fitted into the thumbnail size.
    enum ResizeMode
    {
        IgnoreAspectRatio = 0,          // stretched to the size
        KeepAspectRatio = 1,            // fitted inside; margins get the padding colour
        KeepAspectRatioByExpanding = 2, // covers the size, the overflow cut evenly
    };
    Q_ENUM(ResizeMode)

    ThumbnailRequester(const std::tuple<std::string, Resource::Type>& resource, QObject* parent);
    ~ThumbnailRequester() override;

    const std::tuple<std::string, Resource::Type>& resource() const;

    // Settings of the requests to come; they ask for nothing by themselves.
    void setWidth(int width);
    void setHeight(int height);
    void setSize(int width, int height);
    void setSize(QSize size);
    void setResizeMode(ResizeMode mode);
    // The colour around a frame fitted inside the size; invalid (the default): none, the
    // thumbnail is then smaller than the size on one side.
    void setPaddingColor(QColor color);
    void setResourceDuration(qint64 duration);

    int width() const;
    int height() const;
    ResizeMode resizeMode() const;
    QColor paddingColor() const;
    qint64 resourceDuration() const;

    // Asks for the frames at `times`, in list order.
    void request(const QList<qint64>& times);
    void request(qint64 time);
    // Drops the requests still outstanding: their frames never arrive.
    void cancel();

    // The frames received so far, by time.
    QMap<qint64, QPixmap> previews() const;

signals:
    void thumbnailReady(Types::Time time, const QPixmap& pixmap);

private:
    void ready(qint64 time);

    class Private;
    std::unique_ptr<Private> d;
};

} // namespace Util
