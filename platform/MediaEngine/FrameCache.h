#pragma once

#include <MediaEngine/MediaTypes.h>

#include <list>
#include <unordered_map>

namespace MediaEngine {

// Which content a path held when a frame was asked of it: a file rewritten or replaced at the
// same path differs in at least one of these, so its old frames are never found again.
struct MEDIAENGINE_EXPORT FileIdentity
{
    qint64 size = -1; // -1: the file could not be read
    qint64 modifiedNs = 0;
    quint64 inode = 0;
    quint64 device = 0;

    static FileIdentity of(const QString& path);
    bool operator==(const FileIdentity& other) const;
};

// What makes two frame requests the same: file (path and identity), stream, time, size, mode
// and padding colour.
struct MEDIAENGINE_EXPORT FrameKey
{
    QString path;
    FileIdentity file;
    int streamIndex;
    qint64 time;
    QSize size;
    int resizeMode;
    QRgb padding;
    bool paddingValid;

    // The key of the request for the file as it is on disk now.
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

    // The frame stored for this request (same file with the same content, stream, time, size,
    // mode and padding colour), now the most recently used; a null image when there is none.
    QImage find(const FrameRequest& request);
    QImage find(const FrameKey& key);
    // Stores the frame, dropping the least recently used one when full. The key taken when the
    // frame was asked for stores it under the content it was decoded from.
    void insert(const FrameRequest& request, const QImage& image);
    void insert(FrameKey key, const QImage& image);
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
