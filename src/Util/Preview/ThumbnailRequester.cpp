#include "ThumbnailRequester.h"

#include <Util/Preview/MessageView.h>

#include <QPointer>

#include <vector>

namespace Util {

// The requester's records on the bus: it owns each thumbnail record it asks with, and the
// service's answer arrives as a change of that record.
class ThumbnailRequester::Private : public Message::View<Thumbnail::Object>
{
public:
    Private(ThumbnailRequester* q, const std::tuple<std::string, Resource::Type>& resource) : q(q), resource(resource)
    {}

    ThumbnailRequester* const q;
    const std::tuple<std::string, Resource::Type> resource;
    int width = 0;
    int height = 0;
    ResizeMode resizeMode = KeepAspectRatioByExpanding;
    QColor paddingColor;
    qint64 resourceDuration = 0;
    QMap<qint64, QPixmap> previews;

    // Answers are handed over from the event loop, never inside the bus delivery that
    // brought them (a slot may delete the requester or ask for more).
    std::vector<qint64> readyTimes;
    std::vector<const Thumbnail::Object*> answered;
    bool handOverQueued = false;

    void handOver()
    {
        handOverQueued = false;
        const std::vector<const Thumbnail::Object*> done = std::move(answered);
        answered.clear();
        for (const Thumbnail::Object* record : done) {
            if (isOwned(record))
                remove(record);
        }
        const std::vector<qint64> times = std::move(readyTimes);
        readyTimes.clear();
        QPointer<ThumbnailRequester> alive(q);
        for (qint64 time : times) {
            if (!alive)
                return;
            q->ready(time);
        }
    }

protected:
    void changed(const Thumbnail::Object* record, const Thumbnail::Object* previous) override
    {
        if (!isOwned(record) || !record->isAnswered() || previous->isAnswered())
            return;
        previews.insert(record->time(), QPixmap::fromImage(record->image()));
        readyTimes.push_back(record->time());
        answered.push_back(record);
        if (handOverQueued)
            return;
        handOverQueued = true;
        QMetaObject::invokeMethod(
            q, [this] { handOver(); }, Qt::QueuedConnection);
    }
    using Message::View<Thumbnail::Object>::changed;
};

ThumbnailRequester::ThumbnailRequester(const std::tuple<std::string, Resource::Type>& resource, QObject* parent)
    : QObject(parent), d(std::make_unique<Private>(this, resource))
{
    qRegisterMetaType<Types::Time>("Types::Time");
}

ThumbnailRequester::~ThumbnailRequester() = default;

const std::tuple<std::string, Resource::Type>& ThumbnailRequester::resource() const { return d->resource; }

void ThumbnailRequester::setWidth(int width) { d->width = width; }

void ThumbnailRequester::setHeight(int height) { d->height = height; }

void ThumbnailRequester::setSize(int width, int height)
{
    d->width = width;
    d->height = height;
}

void ThumbnailRequester::setSize(QSize size) { setSize(size.width(), size.height()); }

void ThumbnailRequester::setResizeMode(ResizeMode mode) { d->resizeMode = mode; }

void ThumbnailRequester::setPaddingColor(QColor color) { d->paddingColor = color; }

void ThumbnailRequester::setResourceDuration(qint64 duration) { d->resourceDuration = duration; }

int ThumbnailRequester::width() const { return d->width; }

int ThumbnailRequester::height() const { return d->height; }

ThumbnailRequester::ResizeMode ThumbnailRequester::resizeMode() const { return d->resizeMode; }

QColor ThumbnailRequester::paddingColor() const { return d->paddingColor; }

qint64 ThumbnailRequester::resourceDuration() const { return d->resourceDuration; }

void ThumbnailRequester::request(const QList<qint64>& times)
{
    for (qint64 time : times) {
        if (d->width < 1 || d->height < 1)
            continue;
        auto* record = new Thumbnail::Object;
        record->setResource(d->resource)
            .setResourceDuration(d->resourceDuration)
            .setTime(time)
            .setWidth(d->width)
            .setHeight(d->height)
            .setResizeMode(d->resizeMode)
            .setPaddingColor(d->paddingColor.isValid() ? d->paddingColor.rgba() : 0u);
        d->add(record);
    }
}

void ThumbnailRequester::request(qint64 time) { request(QList<qint64>{time}); }

void ThumbnailRequester::cancel()
{
    d->readyTimes.clear();
    d->answered.clear();
    for (const Thumbnail::Object* record : d->objects()) {
        if (d->isOwned(record))
            d->remove(record);
    }
}

QMap<qint64, QPixmap> ThumbnailRequester::previews() const { return d->previews; }

void ThumbnailRequester::ready(qint64 time) { emit thumbnailReady(time, d->previews.value(time)); }

} // namespace Util
