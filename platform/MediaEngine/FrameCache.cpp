#include <MediaEngine/FrameCache.h>

#include <QFile>
#include <QHash>

#include <sys/stat.h>

namespace MediaEngine {

FileIdentity FileIdentity::of(const QString& path)
{
    FileIdentity identity;
    struct stat status = {};
    if (path.isEmpty() || ::stat(QFile::encodeName(path).constData(), &status) != 0)
        return identity;
    identity.size = qint64(status.st_size);
    identity.modifiedNs = qint64(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
    identity.inode = quint64(status.st_ino);
    identity.device = quint64(status.st_dev);
    return identity;
}

bool FileIdentity::operator==(const FileIdentity& other) const
{
    return size == other.size && modifiedNs == other.modifiedNs && inode == other.inode && device == other.device;
}

bool FrameKey::operator==(const FrameKey& other) const
{
    return time == other.time && file == other.file && streamIndex == other.streamIndex && size == other.size
           && resizeMode == other.resizeMode && padding == other.padding && paddingValid == other.paddingValid
           && path == other.path;
}

size_t FrameKeyHash::operator()(const FrameKey& key) const
{
    size_t seed = qHash(key.path);
    auto combine = [&seed](size_t value) { seed ^= value + 0x9e3779b97f4a7c15ULL + (seed << 6) + (seed >> 2); };
    combine(qHash(key.file.size));
    combine(qHash(key.file.modifiedNs));
    combine(qHash(key.file.inode));
    combine(qHash(key.streamIndex));
    combine(qHash(key.time));
    combine(qHash(key.size.width()));
    combine(qHash(key.size.height()));
    combine(qHash(key.resizeMode));
    combine(qHash(key.padding));
    combine(qHash(key.paddingValid));
    return seed;
}

FrameCache::FrameCache(int capacity) : m_capacity(std::max(0, capacity)) {}

FrameKey FrameKey::of(const FrameRequest& request)
{
    return FrameKey{request.path,
                    FileIdentity::of(request.path),
                    request.streamIndex,
                    request.time,
                    request.size,
                    int(request.resizeMode),
                    request.paddingColor.isValid() ? request.paddingColor.rgba() : 0u,
                    request.paddingColor.isValid()};
}

QImage FrameCache::find(const FrameRequest& request) { return find(FrameKey::of(request)); }

QImage FrameCache::find(const FrameKey& key)
{
    const auto found = m_index.find(key);
    if (found == m_index.end())
        return {};
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return found->second->second;
}

void FrameCache::insert(const FrameRequest& request, const QImage& image) { insert(FrameKey::of(request), image); }

void FrameCache::insert(FrameKey key, const QImage& image)
{
    if (m_capacity == 0 || image.isNull())
        return;
    const auto found = m_index.find(key);
    if (found != m_index.end()) {
        found->second->second = image;
        m_entries.splice(m_entries.begin(), m_entries, found->second);
        return;
    }
    m_entries.emplace_front(key, image);
    m_index.emplace(std::move(key), m_entries.begin());
    trim();
}

void FrameCache::removeFile(const QString& path)
{
    for (auto it = m_entries.begin(); it != m_entries.end();) {
        if (it->first.path == path) {
            m_index.erase(it->first);
            it = m_entries.erase(it);
        } else {
            ++it;
        }
    }
}

void FrameCache::clear()
{
    m_index.clear();
    m_entries.clear();
}

void FrameCache::setCapacity(int capacity)
{
    m_capacity = std::max(0, capacity);
    trim();
}

void FrameCache::trim()
{
    while (int(m_entries.size()) > m_capacity) {
        m_index.erase(m_entries.back().first);
        m_entries.pop_back();
    }
}

} // namespace MediaEngine
