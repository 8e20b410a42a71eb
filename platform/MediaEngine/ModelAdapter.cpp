#include <MediaEngine/ModelAdapter.h>

#include <QCoreApplication>

#include <glog/logging.h>

namespace MediaEngine {

namespace {

// The model counts time in 100-nanosecond units, the engine in microseconds.
constexpr Types::Time unitsPerMicrosecond = Types::TimeUnitsPerSecond / 1'000'000;

Types::Time toModelTime(qint64 microseconds) { return microseconds * unitsPerMicrosecond; }

} // namespace

Media::OpenResult toOpenResult(const ProbeResult& probe)
{
    Media::OpenResult result;
    if (!probe.ok()) {
        result.errors.push_back(Media::OpenError{probe.errorCode, probe.errorMessage.toStdString()});
        return result;
    }
    result.ok = true;
    result.metadata.duration = toModelTime(probe.duration);
    for (const VideoStream& stream : probe.video) {
        Media::Video video;
        video.index = stream.index;
        video.width = stream.frameSize.width();
        video.height = stream.frameSize.height();
        video.pixelAspect = stream.pixelAspect;
        video.frameRate = stream.frameRate;
        video.duration = toModelTime(stream.duration);
        video.stillImage = stream.stillImage;
        video.codec = Types::String(stream.codecName);
        result.metadata.videos.push_back(video);
    }
    for (const AudioStream& stream : probe.audio) {
        Media::Audio audio;
        audio.index = stream.index;
        audio.sampleRate = stream.sampleRate;
        audio.channels = stream.channelCount;
        audio.channelLayout = Types::String(stream.channelLayout);
        audio.duration = toModelTime(stream.duration);
        audio.codec = Types::String(stream.codecName);
        result.metadata.audios.push_back(audio);
    }
    return result;
}

std::optional<FrameRequest> frameRequestOf(const Thumbnail::Object& thumbnail)
{
    const auto& [key, type] = thumbnail.resource();
    if (type != Resource::Video)
        return std::nullopt;
    const QString text = QString::fromStdString(key);
    const QLatin1String separator(":v:");
    const int at = text.lastIndexOf(separator);
    bool isNumber = false;
    const int index = at > 0 ? text.mid(at + separator.size()).toInt(&isNumber) : -1;
    if (!isNumber || index < 0)
        return std::nullopt;
    FrameRequest request;
    request.path = text.left(at);
    request.streamIndex = index;
    request.time = thumbnail.time() / unitsPerMicrosecond;
    request.size = QSize(thumbnail.width(), thumbnail.height());
    const int mode = thumbnail.resizeMode();
    request.resizeMode =
        mode >= int(ResizeMode::IgnoreAspectRatio) && mode <= int(ResizeMode::KeepAspectRatioByExpanding)
            ? ResizeMode(mode)
            : ResizeMode::KeepAspectRatioByExpanding;
    request.paddingColor = QColor::fromRgba(thumbnail.paddingColor());
    return request;
}

std::optional<FrameRequest> frameRequestAt(const Timeline::Object& timeline, Types::Time position, const QSize& size)
{
    const std::vector<const Timeline::Track*> tracks = timeline.tracks();
    // Extra video tracks draw over the primary one, later ones over earlier ones.
    std::vector<const Timeline::Track*> order;
    for (auto it = tracks.rbegin(); it != tracks.rend(); ++it) {
        if ((*it)->kind() == Timeline::Track::ExtraVideo)
            order.push_back(*it);
    }
    order.push_back(timeline.primaryTrack());
    for (const Timeline::Track* track : order) {
        for (const Timeline::Clip* clip : timeline.clipsOnTrack(track)) {
            const Timeline::ClipTiming& timing = timeline.clipTiming(clip);
            const bool visual = clip->type() == Timeline::Clip::Video || clip->type() == Timeline::Clip::Image;
            if (!visual || !clip->file() || clip->isBroken() || position < timing.start() || position >= timing.end())
                continue;
            FrameRequest request;
            request.path = clip->file()->path().toQString();
            request.streamIndex = clip->file()->videoStream(clip->streamIndex()) ? clip->streamIndex() : -1;
            // A still has one picture, whatever the time.
            request.time =
                clip->type() == Timeline::Clip::Image ? 0 : timing.mediaTimeAt(position) / unitsPerMicrosecond;
            request.size = size;
            return request;
        }
    }
    return std::nullopt;
}

ModelOpener::ModelOpener(Engine& engine) : m_engine(&engine) {}

void ModelOpener::open(const Types::String& path, Done done)
{
    if (!m_engine) {
        LOG(ERROR) << "MediaEngine::ModelOpener::open: the media engine is gone; " << path << " fails";
        Media::OpenResult failed;
        failed.errors.push_back(Media::OpenError{ErrorCode::Unknown, "No media engine"});
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [done = std::move(done), failed]() { done(failed); }, Qt::QueuedConnection);
        return;
    }
    m_engine->probe(path.toQString(), nullptr,
                    [done = std::move(done)](const ProbeResult& probe) { done(toOpenResult(probe)); });
}

ModelThumbnailProvider::ModelThumbnailProvider(Engine& engine, Model::Host& host) : m_engine(&engine), m_host(&host) {}

ModelThumbnailProvider::~ModelThumbnailProvider()
{
    if (m_engine)
        for (const auto& [thumbnail, id] : m_pending)
            m_engine->cancel(id);
}

void ModelThumbnailProvider::request(const Thumbnail::Object* thumbnail)
{
    if (!thumbnail || m_pending.count(thumbnail))
        return;
    const std::optional<FrameRequest> frame = frameRequestOf(*thumbnail);
    if (!frame || !m_engine) {
        // Not a video stream (waveforms are drawn elsewhere): a failed answer, from the
        // event loop like every answer.
        m_pending.emplace(thumbnail, 0);
        QMetaObject::invokeMethod(
            &m_context,
            [this, thumbnail]() {
                if (m_pending.erase(thumbnail))
                    answer(thumbnail, QImage());
            },
            Qt::QueuedConnection);
        return;
    }
    const JobId id = m_engine->requestFrame(*frame, &m_context, [this, thumbnail](const FrameResult& result) {
        m_pending.erase(thumbnail);
        answer(thumbnail, result.image);
    });
    m_pending.emplace(thumbnail, id);
}

void ModelThumbnailProvider::cancel(const Thumbnail::Object* thumbnail)
{
    const auto found = m_pending.find(thumbnail);
    if (found == m_pending.end())
        return;
    if (found->second && m_engine)
        m_engine->cancel(found->second);
    m_pending.erase(found);
}

void ModelThumbnailProvider::answer(const Thumbnail::Object* thumbnail, const QImage& image)
{
    if (m_host)
        m_host->answerThumbnail(thumbnail, image);
}

void connectToModel(Model::Host& host, Engine& engine)
{
    host.setOpener(std::make_shared<ModelOpener>(engine));
    host.setThumbnailProvider(std::make_shared<ModelThumbnailProvider>(engine, host));
}

} // namespace MediaEngine
