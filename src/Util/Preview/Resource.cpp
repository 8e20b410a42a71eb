#include "Resource.h"

#include <Util/Filesystem.h>

#include <glog/logging.h>

#include <map>

namespace Resource {

namespace {

using Id = std::tuple<std::string, Resource::Type>;

Id none() { return Id(std::string(), Resource::Unknown); }

// Files by resource identifier; an entry goes when its file leaves the model.
class Registry : public Model::View<Media::File>
{
public:
    void enter(const Media::File* file, std::vector<Id> ids)
    {
        drop(file);
        for (const Id& id : ids)
            m_files[id] = file;
        m_ids[file] = std::move(ids);
        if (!isFollowed(file))
            observe(file);
    }

    const Media::File* find(const Id& id) const
    {
        const auto it = m_files.find(id);
        return it == m_files.end() ? nullptr : it->second;
    }

private:
    void recordRemoved(const Media::File* file) override { drop(file); }

    void drop(const Media::File* file)
    {
        const auto it = m_ids.find(file);
        if (it == m_ids.end())
            return;
        for (const Id& id : it->second) {
            const auto entry = m_files.find(id);
            if (entry != m_files.end() && entry->second == file)
                m_files.erase(entry);
        }
        m_ids.erase(it);
    }

    std::map<Id, const Media::File*> m_files;
    std::map<const Media::File*, std::vector<Id>> m_ids;
};

// Lives as long as the process: the bus may still deliver to it while statics are torn down.
Registry& registry()
{
    static Registry* instance = new Registry;
    return *instance;
}

} // namespace

Id encode(const QString& path, Resource::Type type, int index)
{
    if (type != Resource::Video && type != Resource::Audio)
        return Id(std::string(), type);
    // Joined, not formatted: a file name may hold "%1" and must come out unchanged.
    const QString key =
        Filesystem::cleanPath(path) + QLatin1String(type == Resource::Video ? ":v:" : ":a:") + QString::number(index);
    return Id(key.toStdString(), type);
}

Id encode(const Media::File* file, const Media::Video* video)
{
    if (!file || !video) {
        LOG(ERROR) << "Resource::encode: " << (file ? "null video stream" : "null file");
        return none();
    }
    return encode(file->path().toQString(), Resource::Video, video->index);
}

Id encode(const Media::File* file, const Media::Audio* audio)
{
    if (!file || !audio) {
        LOG(ERROR) << "Resource::encode: " << (file ? "null audio stream" : "null file");
        return none();
    }
    return encode(file->path().toQString(), Resource::Audio, audio->index);
}

Id encode(const Media::File::Track::Video* track)
{
    if (!track) {
        LOG(ERROR) << "Resource::encode: null track";
        return none();
    }
    return encode(track->file, track->video);
}

Id encode(const Media::File::Track::Audio* track)
{
    if (!track) {
        LOG(ERROR) << "Resource::encode: null track";
        return none();
    }
    return encode(track->file, track->audio);
}

Id encode(const Timeline::Clip* clip)
{
    if (!clip) {
        LOG(ERROR) << "Resource::encode: null clip";
        return none();
    }
    const Media::File* file = clip->file();
    if (!file)
        return none();
    Resource::Type type = Resource::Unknown;
    switch (clip->type()) {
    case Timeline::Clip::Video:
    case Timeline::Clip::Image:
        type = Resource::Video;
        break;
    case Timeline::Clip::Audio:
        type = Resource::Audio;
        break;
    default:
        if (file->videoStream(clip->streamIndex()))
            type = Resource::Video;
        else if (file->audioStream(clip->streamIndex()))
            type = Resource::Audio;
        break;
    }
    return encode(file->path().toQString(), type, clip->streamIndex());
}

void registerFile(const Media::File* file, const Media::Metadata& metadata)
{
    if (!file) {
        LOG(ERROR) << "Resource::registerFile: null file";
        return;
    }
    const QString path = file->path().toQString();
    std::vector<Id> ids;
    for (const Media::Video& video : metadata.videos)
        ids.push_back(encode(path, Resource::Video, video.index));
    for (const Media::Audio& audio : metadata.audios)
        ids.push_back(encode(path, Resource::Audio, audio.index));
    registry().enter(file, std::move(ids));
}

const Media::File* registeredFile(const Id& resource) { return registry().find(resource); }

} // namespace Resource
