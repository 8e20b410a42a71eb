#pragma once

#include <EditorModel/Thumbnail.h>

#include <QCache>
#include <QColor>
#include <QImage>
#include <QObject>
#include <QPointer>
#include <QSize>
#include <QString>
#include <QThreadPool>

#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

namespace Model {
class Host;
}

namespace Thumbnail {

// Scales `frame` into `size` by the thumbnail resize mode (the numbering of Qt's aspect
// ratio modes): 0 stretches it, 1 fits it inside (the margins get `padding` when it is not
// fully transparent; otherwise the result is smaller on one side), 2 covers the size and
// cuts the overflow evenly. A null frame or an empty size gives a null image.
QImage fitFrame(const QImage& frame, QSize size, int resizeMode, QColor padding);

// The model's thumbnail service for still pictures: answers the thumbnail records of video
// resources ("<path>:v:0") of files Qt's image plugins read. Frames are decoded and scaled
// on worker threads and answered on the GUI thread, from the event loop, in request order
// (a frame ready early waits for those asked for before it).
// A picture is the same at every time, so every request for the same file, size and fit is
// served by one decode: later requests come from a cache (bounded by `cacheBytes`), and
// requests made while the decode runs wait for it. A record that cannot be served (a missing
// or unreadable file, a resource that is no picture, no size) gets a failed answer.
class StillImageProvider : public Provider
{
public:
    explicit StillImageProvider(Model::Host& host, qint64 cacheBytes = 64 * 1024 * 1024);
    ~StillImageProvider() override;

    void request(const Object* thumbnail) override;
    void cancel(const Object* thumbnail) override;

    // Records asked for and not answered yet.
    int pendingCount() const;
    // Pictures decoded so far (cache hits and shared decodes do not count).
    int decodeCount() const;

private:
    struct Channel;
    using Key = QString;

    void answerLater(const Object* thumbnail, const QImage& image);
    void flushAnswers();
    void decoded(const Key& key, const QImage& image);

    QPointer<Model::Host> m_host;
    std::shared_ptr<Channel> m_channel;
    QObject m_context; // queued work for this provider dies with it
    QThreadPool m_pool;
    QCache<Key, QImage> m_cache;
    std::unordered_map<const Object*, Key> m_pending;               // record -> what it waits for
    std::unordered_map<Key, std::vector<const Object*>> m_decoding; // decode -> records waiting
    std::deque<const Object*> m_order;                              // records in request order
    std::unordered_map<const Object*, QImage> m_ready;              // frames not handed over yet
    bool m_flushQueued = false;
    int m_decodes = 0;
};

} // namespace Thumbnail
