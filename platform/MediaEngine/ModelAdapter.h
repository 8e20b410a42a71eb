#pragma once

#include <MediaEngine/Engine.h>

#include <EditorModel/Host.h>
#include <EditorModel/Media.h>
#include <EditorModel/Thumbnail.h>
#include <EditorModel/Timeline.h>

#include <QObject>
#include <QPointer>

#include <optional>
#include <unordered_map>

namespace MediaEngine {

// What the model learns of a probed file: its streams and length in the model's time unit,
// or the processing-error code that stopped it.
MEDIAENGINE_EXPORT Media::OpenResult toOpenResult(const ProbeResult& probe);

// The frame a thumbnail record asks for: the file and stream named by its video resource
// ("<path>:v:<index>"), its time, size, resize mode and padding colour. Nothing for a
// resource that names no video stream.
MEDIAENGINE_EXPORT std::optional<FrameRequest> frameRequestOf(const Thumbnail::Object& thumbnail);

// The frame a preview of `timeline` shows at `position`, `size` large: the picture of the
// topmost clip there that shows a video stream or a still (extra video tracks over the primary
// one), at the point of its media that the clip's offset, speed and direction give
// (Timeline::ClipTiming::mediaTimeAt): a reversed clip starts on its span's last frame, a clip
// at 2x plays its media twice as fast. Nothing where no such clip is.
MEDIAENGINE_EXPORT std::optional<FrameRequest> frameRequestAt(const Timeline::Object& timeline, Types::Time position,
                                                              const QSize& size);

// Opens the model's media files with the engine: the streams of an opened file, or the
// error code a failed file's Media::FileOpenFailedNotification carries. The engine must
// outlive the files being opened; without it a file fails with code 8.
class MEDIAENGINE_EXPORT ModelOpener : public Media::Opener
{
public:
    explicit ModelOpener(Engine& engine);
    void open(const Types::String& path, Done done) override;

private:
    QPointer<Engine> m_engine;
};

// Answers the model's thumbnail records with decoded frames (a failed answer for a file
// that cannot be read, or a resource that is not a video stream). A record removed before
// its answer stops its work and is not answered.
class MEDIAENGINE_EXPORT ModelThumbnailProvider : public Thumbnail::Provider
{
public:
    ModelThumbnailProvider(Engine& engine, Model::Host& host);
    ~ModelThumbnailProvider() override;

    void request(const Thumbnail::Object* thumbnail) override;
    void cancel(const Thumbnail::Object* thumbnail) override;

    int pendingCount() const { return int(m_pending.size()); }

private:
    void answer(const Thumbnail::Object* thumbnail, const QImage& image);

    QPointer<Engine> m_engine;
    QPointer<Model::Host> m_host;
    QObject m_context;                                             // answers stop with the provider
    std::unordered_map<const Thumbnail::Object*, JobId> m_pending; // 0: answered without the engine
};

// Makes the host open its files and answer its thumbnails with the engine.
MEDIAENGINE_EXPORT void connectToModel(Model::Host& host, Engine& engine);

} // namespace MediaEngine
