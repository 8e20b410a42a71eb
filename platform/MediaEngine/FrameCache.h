#pragma once

#include <MediaEngine/MediaTypes.h>

#include <list>
#include <unordered_map>

namespace MediaEngine {

// What makes two frame requests the same: file, stream, time, size, mode and padding colour.
struct MEDIAENGINE_EXPORT FrameKey
{
    QString path;
    int streamIndex;
    qint64 time;
    QSize size;
    int resizeMode;
    QRgb padding;
    bool paddingValid;

    static FrameKey of(const FrameRequest& request);
    bool operator==(const FrameKey& other) const;
};

struct MEDIAENGINE_EXPORT FrameKeyHash
{
    size_t operator()(const FrameKey& key) const;
};

// The most recently used frames by request, so that asking again for a frame (scrolling
// back, a repaint) costs a lookup instead of a decode. Not thread-safe: the engine uses it
// on its own thread only.
class MEDIAENGINE_EXPORT FrameCache
{
public:
    explicit FrameCache(int capacity = 256);

    // The frame stored for this request (same file, stream, time, size, mode and padding
    // colour), now the most recently used; a null image when there is none.
    QImage find(const FrameRequest& request);
    // Stores the frame, dropping the least recently used one when full.
    void insert(const FrameRequest& request, const QImage& image);
    // Drops every frame of the file.
    void removeFile(const QString& path);
    void clear();

    int size() const { return int(m_entries.size()); }
    int capacity() const { return m_capacity; }
    void setCapacity(int capacity);

private:
    using Entry = std::pair<FrameKey, QImage>;

    void trim();

    int m_capacity;
    std::list<Entry> m_entries; // most recently used first
    std::unordered_map<FrameKey, std::list<Entry>::iterator, FrameKeyHash> m_index;
};

} // namespace MediaEngine
