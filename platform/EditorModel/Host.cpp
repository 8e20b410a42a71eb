#include <EditorModel/Host.h>
#include <EditorModel/Registry.h>
#include <EditorModel/StillImageThumbnails.h>

#include <QDir>
#include <QPointer>

#include <glog/logging.h>

#include <algorithm>
#include <map>

namespace Model {

namespace {
Host* g_instance = nullptr;

// How long a clip of an opened file plays: its moving picture, else its sound; 0 for a still
// (which keeps the length it was given) or a file that tells no length.
Types::Time openedLength(const Media::File* file)
{
    if (const Media::Video* video = file->mainVideo())
        return video->stillImage ? 0 : video->duration > 0 ? video->duration : file->duration();
    if (const Media::Audio* audio = file->mainAudio())
        return audio->duration > 0 ? audio->duration : file->duration();
    return 0;
}
} // namespace

TimelineRequestHandler::~TimelineRequestHandler() = default;

namespace Details {
StoreBase::~StoreBase() = default;
} // namespace Details

// Follows every thumbnail record any owner announces and hands it to the provider.
class Host::ThumbnailWatch : public Model::View<Thumbnail::Object>
{
public:
    explicit ThumbnailWatch(Host& host) : m_host(host) { observeNew(true); }

private:
    void recordAdded(const Thumbnail::Object* thumbnail) override
    {
        if (Thumbnail::Provider* provider = m_host.thumbnailProvider())
            provider->request(thumbnail);
    }
    void recordRemoved(const Thumbnail::Object* thumbnail) override
    {
        if (Thumbnail::Provider* provider = m_host.thumbnailProvider())
            provider->cancel(thumbnail);
    }

    Host& m_host;
};

// Follows the timelines that batches and provisional clips wait on, whoever owns them, so
// that a timeline removed (or freed with its owner) is never announced or edited afterwards.
class Host::TimelineWatch : public Model::View<Timeline::Object>
{
public:
    explicit TimelineWatch(Host& host) : m_host(host) {}

    void follow(const Timeline::Object* timeline)
    {
        if (!isFollowed(timeline))
            observe(timeline);
    }

private:
    void recordRemoved(const Timeline::Object* timeline) override { m_host.timelineRemoved(timeline); }

    Host& m_host;
};

Host::Host(QObject* parent) : QObject(parent)
{
    if (!g_instance)
        g_instance = this;

    // Stores made now serve add requests from the start.
    store<Timeline::Object>();
    store<Timeline::Clip>();
    store<Timeline::Track>();
    store<Media::File>().onRemoved = [this](const Media::File* file) {
        m_opening.erase(file);
        m_provisional.erase(file);
        fileSettled(file);
    };
    store<Media::Video>();
    store<Media::Audio>();
    store<Composition::Object>();
    store<Task::Object>();

    m_editor = add(std::make_unique<Editor::Object>());
    m_playback = add(std::make_unique<Playback::Object>());
    m_selection = add(std::make_unique<Selection::Object<Timeline::Clip>>());
    m_thumbnailWatch = std::make_unique<ThumbnailWatch>(*this);
    m_timelineWatch = std::make_unique<TimelineWatch>(*this);
    m_thumbnails = std::make_shared<Thumbnail::StillImageProvider>(*this);

    using namespace Timeline;
    subscribeAll(typeid(FileAddRequest));
    subscribeAll(typeid(TimelineFileAddRequest));
    subscribeAll(typeid(OverlayAddRequest));
    subscribeAll(typeid(QuizAddRequest));
    subscribeAll(typeid(SplitRequest));
    subscribeAll(typeid(TransitionAddRequest));
    subscribeAll(typeid(ClipAddRequest));
    subscribeAll(typeid(FreezeFrameRequest));
    subscribeAll(typeid(AnimationAddRequest));
    subscribeAll(typeid(PanAndZoomAddRequest));
    subscribe(m_playback);
}

Host::~Host()
{
    unsubscribeEverything();
    m_thumbnailWatch.reset();
    m_timelineWatch.reset();
    // Records that refer to others (clips to files, timelines to clips) go first.
    for (std::type_index type : {std::type_index(typeid(Timeline::Object)), std::type_index(typeid(Timeline::Clip))})
        m_stores.erase(type);
    m_stores.clear();
    if (g_instance == this)
        g_instance = nullptr;
}

Host* Host::instance() { return g_instance; }

const Timeline::Object* Host::addTimeline(const Types::String& name)
{
    auto timeline = std::make_unique<Timeline::Object>();
    timeline->name = name;
    return add(std::move(timeline));
}

const Timeline::Clip* Host::addClip(Timeline::Clip clip)
{
    return add(std::make_unique<Timeline::Clip>(std::move(clip)));
}

// --- edit sessions --------------------------------------------------------------------------------

Editor::Worker* Host::worker() const { return m_editor ? m_editor->worker : nullptr; }

bool Host::beginSession(const Timeline::Object* timeline, const Timeline::Clip* clip, Editor::Object::Mode mode)
{
    if (timeline && clip && !timeline->contains(clip)) {
        LOG(ERROR) << "Model::Host::beginSession: the clip is not on the timeline";
        return false;
    }
    {
        auto e = edit(m_editor);
        e->active = true;
        e->mode = mode;
        e->timeline = timeline;
        e->clip = clip;
        e->editPosition.reset();
    }
    return loadSession();
}

bool Host::loadSession()
{
    Editor::Worker* w = worker();
    if (w)
        w->onLoad();
    return w != nullptr;
}

bool Host::applySession()
{
    Editor::Worker* w = worker();
    if (w)
        w->onApply();
    edit(m_editor)->active = false;
    return w != nullptr;
}

bool Host::resetSession()
{
    Editor::Worker* w = worker();
    if (w)
        w->onReset();
    edit(m_editor)->active = false;
    return w != nullptr;
}

bool Host::setEditPosition(std::optional<Types::Time> position)
{
    auto e = edit(m_editor);
    e->editPosition = position;
    return e.commit();
}

bool Host::canAcceptClips(const std::set<const Timeline::Clip*>& clips) const
{
    const Editor::Worker* w = worker();
    return w && w->canAccept(clips);
}

void Host::filterClips(std::set<const Timeline::Clip*>& clips) const
{
    if (const Editor::Worker* w = worker())
        w->filterClips(clips);
}

// --- the player ---------------------------------------------------------------------------------

void Host::setPlaybackTimeline(const Timeline::Object* timeline)
{
    auto e = edit(m_playback);
    e->timeline = timeline;
    e->setState(timeline ? std::optional<Playback::State>(Playback::State()) : std::nullopt);
}

bool Host::editPlaybackState(const char* operation, const std::function<void(Playback::State&)>& change)
{
    if (!m_playback->state()) {
        LOG(ERROR) << "Model::Host::" << operation << ": no timeline is loaded in the player";
        return false;
    }
    auto e = edit(m_playback);
    change(*e->state());
    return e.commit();
}

bool Host::setPlaybackCode(int code)
{
    return editPlaybackState("setPlaybackCode", [code](Playback::State& state) {
        state.code = code;
        state.seek = false;
    });
}

bool Host::setPlaybackPosition(Types::Time position)
{
    return editPlaybackState("setPlaybackPosition", [position](Playback::State& state) {
        state.position = position;
        state.seek = false;
    });
}

bool Host::setPlaybackUnavailable(bool unavailable)
{
    return editPlaybackState("setPlaybackUnavailable",
                             [unavailable](Playback::State& state) { state.unavailable = unavailable; });
}

void Host::notify(const Playback::FrameSeekRequest& r)
{
    if (r.playback != m_playback || !m_playback->state())
        return;
    auto e = edit(m_playback);
    e->state()->position = r.position;
    e->state()->seek = true;
}

// --- media files ----------------------------------------------------------------------------------

void Host::setOpener(std::shared_ptr<Media::Opener> opener) { m_opener = std::move(opener); }

const Media::File* Host::addFile(const Types::String& path)
{
    if (path.empty()) {
        LOG(ERROR) << "Model::Host::addFile: empty path";
        return nullptr;
    }
    const QString clean = QDir::toNativeSeparators(QDir::cleanPath(path.toQString().trimmed()));
    const Media::File* file = add(std::make_unique<Media::File>(Types::String(clean)));
    openFile(file);
    return file;
}

bool Host::openFile(const Media::File* file)
{
    if (!owns(file)) {
        LOG(ERROR) << "Model::Host::openFile: not a file of the host";
        return false;
    }
    if (!m_opener) {
        LOG(ERROR) << "Model::Host::openFile: no media opener is set; " << file->path() << " stays unopened";
        return false;
    }
    if (file->isFinished() || m_opening.count(file))
        return false;
    const std::uint64_t ticket = m_nextTicket++;
    m_opening[file] = ticket;
    QPointer<Host> self(this);
    m_opener->open(file->path(), [self, file, ticket](const Media::OpenResult& result) {
        // The answer of a file removed (or a host destroyed) meanwhile is dropped.
        if (!self)
            return;
        const auto it = self->m_opening.find(file);
        if (it == self->m_opening.end() || it->second != ticket)
            return;
        self->m_opening.erase(it);
        self->finishOpening(file, result);
    });
    return true;
}

void Host::finishOpening(const Media::File* file, const Media::OpenResult& result)
{
    if (result.ok) {
        std::vector<const Media::Video*> videos;
        std::vector<const Media::Audio*> audios;
        for (const Media::Video& v : result.metadata.videos) {
            auto video = std::make_unique<Media::Video>(v);
            video->file = file;
            videos.push_back(add(std::move(video)));
        }
        for (const Media::Audio& a : result.metadata.audios) {
            auto audio = std::make_unique<Media::Audio>(a);
            audio->file = file;
            audios.push_back(add(std::move(audio)));
        }
        {
            auto e = edit(file);
            e->setStreams(std::move(videos), std::move(audios));
            e->setDuration(result.metadata.duration);
            e->setOpened(true);
        }
        fitOpenedClips(file);
    } else {
        m_provisional.erase(file);
        // Who waits for the file learns why before it sees the file fail.
        publish(Media::FileOpenFailedNotification(file, result.errors));
        edit(file)->setFailed(true);
    }
    fileSettled(file);
}

void Host::watchFiles(const Timeline::Object* timeline, const std::vector<const Media::File*>& files)
{
    if (!timeline) {
        LOG(ERROR) << "Model::Host::watchFiles: null timeline";
        return;
    }
    m_timelineWatch->follow(timeline);
    Batch batch{timeline, {}};
    for (const Media::File* file : files) {
        if (file && owns(file) && !file->isFinished())
            batch.waiting.insert(file);
    }
    m_batches.push_back(std::move(batch));
    announceBatches();
}

void Host::fitWhenOpened(const Timeline::Object* timeline, const std::vector<const Timeline::Clip*>& clips)
{
    if (!timeline) {
        LOG(ERROR) << "Model::Host::fitWhenOpened: null timeline";
        return;
    }
    for (const Timeline::Clip* clip : clips) {
        if (!clip || !clip->file() || !timeline->contains(clip) || clip->file()->isFinished())
            continue;
        m_timelineWatch->follow(timeline);
        m_provisional.emplace(clip->file(), Provisional{timeline, clip, timeline->clipTiming(clip)});
    }
}

void Host::fitOpenedClips(const Media::File* file)
{
    const auto range = m_provisional.equal_range(file);
    std::vector<Provisional> waiting;
    for (auto it = range.first; it != range.second; ++it)
        waiting.push_back(it->second);
    m_provisional.erase(range.first, range.second);
    const Types::Time length = openedLength(file);
    if (length <= 0)
        return;

    // One edit per timeline, for all the clips of the file on it. (A timeline removed meanwhile
    // took its entries with it.)
    std::map<const Timeline::Object*, std::vector<Provisional>> byTimeline;
    for (const Provisional& p : waiting)
        byTimeline[p.timeline].push_back(p);
    for (const auto& entry : byTimeline) {
        const Timeline::Object* timeline = entry.first;
        bool changed = false;
        auto e = store<Timeline::Object>().edit(timeline);
        for (const Provisional& p : entry.second) {
            if (!owns(p.clip) || !e->contains(p.clip))
                continue;
            // Earlier clips of the batch may have moved it; a length or speed given meanwhile
            // is the user's and stays.
            Timeline::ClipTiming timing = e->clipTiming(p.clip);
            if (timing.length != p.timing.length || timing.speed != p.timing.speed || timing.offset != p.timing.offset)
                continue;
            const Types::Time by = Types::Time(double(length) / timing.speed + 0.5) - timing.length;
            if (by == 0)
                continue;
            // What was packed after the clip follows its end.
            for (const Timeline::Clip* later : e->clipsOnTrack(timing.track)) {
                Timeline::ClipTiming moved = e->clipTiming(later);
                if (later != p.clip && moved.position >= timing.end()) {
                    moved.position += by;
                    e->moveClip(later, moved);
                }
            }
            timing.length += by;
            e->moveClip(p.clip, timing);
            changed = true;
        }
        if (!changed)
            e.cancel();
    }
}

void Host::fileSettled(const Media::File* file)
{
    for (Batch& batch : m_batches)
        batch.waiting.erase(file);
    announceBatches();
}

void Host::announceBatches()
{
    // From the event loop, never inside the call that finished the batch: who added the files
    // first records that it waits for them.
    if (m_announceQueued)
        return;
    m_announceQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_announceQueued = false;
            // One at a time: a receiver may remove another finished batch's timeline, which
            // takes that batch out of the list before it is announced.
            for (;;) {
                const auto finished = std::find_if(m_batches.begin(), m_batches.end(),
                                                   [](const Batch& batch) { return batch.waiting.empty(); });
                if (finished == m_batches.end())
                    break;
                const Timeline::Object* timeline = finished->timeline;
                m_batches.erase(finished);
                publish(Timeline::AllFilesProcessedNotification(timeline));
            }
        },
        Qt::QueuedConnection);
}

void Host::timelineRemoved(const Timeline::Object* timeline)
{
    m_batches.erase(std::remove_if(m_batches.begin(), m_batches.end(),
                                   [timeline](const Batch& batch) { return batch.timeline == timeline; }),
                    m_batches.end());
    for (auto it = m_provisional.begin(); it != m_provisional.end();)
        it = it->second.timeline == timeline ? m_provisional.erase(it) : std::next(it);
}

// --- thumbnails -----------------------------------------------------------------------------------

void Host::setThumbnailProvider(std::shared_ptr<Thumbnail::Provider> provider) { m_thumbnails = std::move(provider); }

bool Host::answerThumbnail(const Thumbnail::Object* thumbnail, const QImage& image)
{
    if (!thumbnail || !m_thumbnailWatch->isFollowed(thumbnail)) {
        LOG(ERROR) << "Model::Host::answerThumbnail: the thumbnail record is gone";
        return false;
    }
    auto e = m_thumbnailWatch->edit(thumbnail);
    e->setImage(image);
    e->setFailed(image.isNull());
    return e.commit();
}

// --- timeline requests ------------------------------------------------------------------------------

void Host::setTimelineRequestHandler(std::shared_ptr<TimelineRequestHandler> handler)
{
    m_requests = std::move(handler);
}

#define EDITORMODEL_FORWARD(Request, operation)                                                                        \
    void Host::notify(const Timeline::Request& r)                                                                      \
    {                                                                                                                  \
        if (m_requests)                                                                                                \
            m_requests->operation(r);                                                                                  \
    }
EDITORMODEL_FORWARD(FileAddRequest, fileAdd)
EDITORMODEL_FORWARD(TimelineFileAddRequest, timelineFileAdd)
EDITORMODEL_FORWARD(OverlayAddRequest, overlayAdd)
EDITORMODEL_FORWARD(QuizAddRequest, quizAdd)
EDITORMODEL_FORWARD(SplitRequest, split)
EDITORMODEL_FORWARD(TransitionAddRequest, transitionAdd)
EDITORMODEL_FORWARD(ClipAddRequest, clipAdd)
EDITORMODEL_FORWARD(FreezeFrameRequest, freezeFrame)
EDITORMODEL_FORWARD(AnimationAddRequest, animationAdd)
EDITORMODEL_FORWARD(PanAndZoomAddRequest, panAndZoomAdd)
#undef EDITORMODEL_FORWARD

} // namespace Model
