#pragma once

#include <EditorModel/ModelView.h>
#include <EditorModel/Types.h>

#include <PubSub/PubSub.h>

#include <boost/rational.hpp>

#include <functional>
#include <string>
#include <vector>

namespace Media {

class File;

// A video stream of a media file.
class Video : public virtual PubSub::Object
{
public:
    const File* file = nullptr; // the file the stream belongs to
    int index = -1;             // stream index in the file
    int width = 0;
    int height = 0;
    boost::rational<long long> pixelAspect{1, 1};
    boost::rational<long long> frameRate{0, 1}; // 0 for a still image
    Types::Time duration = 0;
    bool stillImage = false;
    Types::String codec;
};

// An audio stream of a media file.
class Audio : public virtual PubSub::Object
{
public:
    const File* file = nullptr;
    int index = -1;
    int sampleRate = 0;
    int channels = 0;
    Types::String channelLayout; // "mono", "stereo", "5.1(side)"...
    Types::Time duration = 0;
    Types::String codec;
};

// What opening a file found: its streams (their `file` is not set yet) and its length.
struct Metadata
{
    Types::Time duration = 0;
    std::vector<Video> videos;
    std::vector<Audio> audios;
};

// A media file of the project. The model opens it asynchronously: a new file is neither opened
// nor failed; it ends with one of the two flags set, and its streams known when opened.
class File : public virtual PubSub::Object
{
public:
    // A stream of a file, as thumbnails and waveforms name it.
    struct Track
    {
        struct Video
        {
            const File* file = nullptr;
            const Media::Video* video = nullptr;
        };
        struct Audio
        {
            const File* file = nullptr;
            const Media::Audio* audio = nullptr;
        };
    };

    File() = default;
    explicit File(const Types::String& path) : m_path(path) {}

    const Types::String& path() const noexcept { return m_path; }
    File& setPath(const Types::String& path)
    {
        m_path = path;
        return *this;
    }

    bool isOpened() const noexcept { return m_opened; }
    bool isFailed() const noexcept { return m_failed; }
    // Finishing sets one flag and clears the other.
    File& setOpened(bool opened)
    {
        m_opened = opened;
        if (opened)
            m_failed = false;
        return *this;
    }
    File& setFailed(bool failed)
    {
        m_failed = failed;
        if (failed)
            m_opened = false;
        return *this;
    }
    bool isFinished() const noexcept { return m_opened || m_failed; }

    const std::vector<const Video*>& videos() const noexcept { return m_videos; }
    const std::vector<const Audio*>& audios() const noexcept { return m_audios; }
    File& setStreams(std::vector<const Video*> videos, std::vector<const Audio*> audios)
    {
        m_videos = std::move(videos);
        m_audios = std::move(audios);
        return *this;
    }
    Types::Time duration() const noexcept { return m_duration; }
    File& setDuration(Types::Time duration)
    {
        m_duration = duration;
        return *this;
    }
    // The first video or audio stream, or null.
    const Video* mainVideo() const noexcept { return m_videos.empty() ? nullptr : m_videos.front(); }
    const Audio* mainAudio() const noexcept { return m_audios.empty() ? nullptr : m_audios.front(); }
    // The stream with that index in the file, or null.
    const Video* videoStream(int index) const;
    const Audio* audioStream(int index) const;

private:
    Types::String m_path;
    bool m_opened = false;
    bool m_failed = false;
    Types::Time m_duration = 0;
    std::vector<const Video*> m_videos;
    std::vector<const Audio*> m_audios;
};

// One reason a file could not be opened: a processing-error code (36 corrupted or missing,
// 20 codec licence not activated...) and a developer's description.
struct OpenError
{
    int code = 0;
    std::string text;
};

// Published on a file's bus object, before the file is marked failed.
class FileOpenFailedNotification : public PubSub::Details::MessageBase
{
public:
    FileOpenFailedNotification(const File* file, std::vector<OpenError> errors)
        : MessageBase(file), file(file), errors(std::move(errors))
    {}
    const File* file;
    std::vector<OpenError> errors;
};

// The outcome of opening a file: its metadata, or the errors that stopped it.
struct OpenResult
{
    bool ok = false;
    Metadata metadata;
    std::vector<OpenError> errors;
};

// How the model opens files: the host hands each file's path to its opener, which does the work
// off the GUI thread and calls `done` exactly once, on the GUI thread, from the event loop (never
// inside open()). A media engine, or a test, provides it.
class Opener
{
public:
    using Done = std::function<void(const OpenResult&)>;
    virtual ~Opener();
    virtual void open(const Types::String& path, Done done) = 0;
};

// The model's observer of media records, with hooks named for each kind (specialised below).
template <class T>
class View;

// Media files: added, removed, and finished opening (opened or failed). Also reached by a
// subscriber that subscribes to a file directly.
template <>
class View<File> : public Model::View<File>
{
protected:
    virtual void fileAdded(const File*) {}
    virtual void fileRemoved(const File*) {}
    virtual void fileOpened(const File*) {}
    virtual void fileFailed(const File*) {}
    // Any change of a file, before fileOpened or fileFailed.
    virtual void fileChanged(const File* /*file*/, const File* /*previous*/) {}

private:
    void recordAdded(const File* file) override { fileAdded(file); }
    void recordRemoved(const File* file) override { fileRemoved(file); }
    void recordChanged(const File* file, const File* previous) override
    {
        fileChanged(file, previous);
        if (file->isOpened() && !previous->isOpened())
            fileOpened(file);
        if (file->isFailed() && !previous->isFailed())
            fileFailed(file);
    }
};

template <>
class View<Video> : public Model::View<Video>
{
protected:
    virtual void videoAdded(const Video*) {}
    virtual void videoRemoved(const Video*) {}
    virtual void videoChanged(const Video* /*previous*/, const Video* /*current*/) {}

private:
    void recordAdded(const Video* video) override { videoAdded(video); }
    void recordRemoved(const Video* video) override { videoRemoved(video); }
    void recordChanged(const Video* video, const Video* previous) override { videoChanged(previous, video); }
};

template <>
class View<Audio> : public Model::View<Audio>
{
protected:
    virtual void audioAdded(const Audio*) {}
    virtual void audioRemoved(const Audio*) {}
    virtual void audioChanged(const Audio* /*previous*/, const Audio* /*current*/) {}

private:
    void recordAdded(const Audio* audio) override { audioAdded(audio); }
    void recordRemoved(const Audio* audio) override { audioRemoved(audio); }
    void recordChanged(const Audio* audio, const Audio* previous) override { audioChanged(previous, audio); }
};

} // namespace Media
