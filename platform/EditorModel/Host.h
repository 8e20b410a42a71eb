#pragma once

#include <EditorModel/Editor.h>
#include <EditorModel/Media.h>
#include <EditorModel/ModelView.h>
#include <EditorModel/Playback.h>
#include <EditorModel/Selection.h>
#include <EditorModel/Thumbnail.h>
#include <EditorModel/Timeline.h>
#include <EditorModel/TimelineRequests.h>

#include <QObject>

#include <functional>
#include <memory>
#include <set>
#include <typeindex>
#include <unordered_map>
#include <vector>

namespace Model {

// Where the host hands the timeline requests published on the bus (to any timeline, its own or a
// private copy). The services that add files, overlays and quizzes implement the operations they
// serve; the base versions ignore a request. Serving a FileAddRequest, for one: for each path,
// Host::addFile (the record, announced and being opened), a Timeline::FileAddingNotification on
// the timeline, a clip (Host::addClip) placed by an edit of the timeline (through any view: the
// timeline's owner applies it); then Host::watchFiles(timeline, files), which publishes
// Timeline::AllFilesProcessedNotification once they have all finished opening.
class TimelineRequestHandler
{
public:
    virtual ~TimelineRequestHandler();
    virtual void fileAdd(const Timeline::FileAddRequest&) {}
    virtual void timelineFileAdd(const Timeline::TimelineFileAddRequest&) {}
    virtual void overlayAdd(const Timeline::OverlayAddRequest&) {}
    virtual void quizAdd(const Timeline::QuizAddRequest&) {}
    virtual void split(const Timeline::SplitRequest&) {}
    virtual void transitionAdd(const Timeline::TransitionAddRequest&) {}
    virtual void clipAdd(const Timeline::ClipAddRequest&) {}
    virtual void freezeFrame(const Timeline::FreezeFrameRequest&) {}
    virtual void animationAdd(const Timeline::AnimationAddRequest&) {}
    virtual void panAndZoomAdd(const Timeline::PanAndZoomAddRequest&) {}
};

namespace Details {

class StoreBase
{
public:
    virtual ~StoreBase();
};

// The host's records of one type: it serves the add requests of every record of T and the
// change and remove requests of its own.
template <class T>
class Store : public StoreBase, public Model::View<T>
{
public:
    Store() { this->serveAddRequests(true); }
    std::function<void(const T*)> onRemoved;

private:
    void recordRemoved(const T* object) override
    {
        if (onRemoved && this->isOwned(object))
            onRemoved(object);
    }
};

} // namespace Details

// The model: one object, made by the application (or a test), that owns the records of the edit
// session (timelines, clips, media files and streams, the editing state, the player's state, the
// clip selection) and serves the requests published to them: Add of any record type, Change and
// Remove of its records, seeks of the player. It opens media files through a Media::Opener, asks
// a Thumbnail::Provider for the frames thumbnail records ask for, and hands timeline requests to
// a TimelineRequestHandler. Everything runs on the GUI thread.
class Host : public QObject,
             private PubSub::Subscriber<Timeline::FileAddRequest>,
             private PubSub::Subscriber<Timeline::TimelineFileAddRequest>,
             private PubSub::Subscriber<Timeline::OverlayAddRequest>,
             private PubSub::Subscriber<Timeline::QuizAddRequest>,
             private PubSub::Subscriber<Timeline::SplitRequest>,
             private PubSub::Subscriber<Timeline::TransitionAddRequest>,
             private PubSub::Subscriber<Timeline::ClipAddRequest>,
             private PubSub::Subscriber<Timeline::FreezeFrameRequest>,
             private PubSub::Subscriber<Timeline::AnimationAddRequest>,
             private PubSub::Subscriber<Timeline::PanAndZoomAddRequest>,
             private PubSub::Subscriber<Playback::FrameSeekRequest>,
             private PubSub::Publisher<Timeline::AllFilesProcessedNotification, Media::FileOpenFailedNotification>
{
    Q_OBJECT

public:
    explicit Host(QObject* parent = nullptr);
    ~Host() override;

    // The host made first and still alive, or null.
    static Host* instance();

    // --- records ---------------------------------------------------------------------------
    // The store of records of T (made on first use; it serves add requests from then on).
    template <class T>
    Details::Store<T>& store()
    {
        auto& slot = m_stores[typeid(T)];
        if (!slot)
            slot = std::make_unique<Details::Store<T>>();
        return static_cast<Details::Store<T>&>(*slot);
    }
    // Takes a record over and announces it; the record, or null for a null one.
    template <class T>
    const T* add(std::unique_ptr<T> record)
    {
        return store<T>().own(std::move(record));
    }
    // Removes a record of the host (announced, then freed).
    template <class T>
    bool remove(const T* record)
    {
        if (!store<T>().isOwned(record)) {
            LOG(ERROR) << "Model::Host::remove: not a record of the host";
            return false;
        }
        return store<T>().remove(record);
    }
    // Edits a record of the host in place (applied and announced when the edit ends).
    template <class T>
    Edit<T> edit(const T* record)
    {
        if (!store<T>().isOwned(record)) {
            LOG(ERROR) << "Model::Host::edit: not a record of the host";
            return Edit<T>(nullptr, nullptr);
        }
        return store<T>().edit(record);
    }
    template <class T>
    bool owns(const T* record)
    {
        return store<T>().isOwned(record);
    }

    // A new timeline of the host, with its standard tracks.
    const Timeline::Object* addTimeline(const Types::String& name = {});
    // A new clip of the host (not yet on any timeline).
    const Timeline::Clip* addClip(Timeline::Clip clip);

    // --- the model's own records -----------------------------------------------------------------
    const Editor::Object* editor() const noexcept { return m_editor; }
    const Playback::Object* playback() const noexcept { return m_playback; }
    const Selection::Object<Timeline::Clip>* clipSelection() const noexcept { return m_selection; }

    // --- edit sessions (through the editor object's worker) ---------------------------------------
    // Starts editing `clip` of `timeline`: the editor object becomes active with that mode,
    // clip and timeline and no edit position, then the worker loads the session (its onLoad(),
    // once). Do not follow it with loadSession(), which would load a second time. False without
    // a worker (the editor object is active all the same), or, with a log line and nothing
    // changed, when the clip is not on the timeline.
    bool beginSession(const Timeline::Object* timeline, const Timeline::Clip* clip,
                      Editor::Object::Mode mode = Editor::Object::ClipSettings);
    // Has the worker load again (its onLoad()), to reread a session whose clip or timeline
    // changed; the editor object is not touched, active or not. False without a worker.
    bool loadSession();
    // The worker applies (onApply()) or drops (onReset()) the session's changes; then the editor
    // object is inactive. False without a worker (the editor object is made inactive anyway).
    bool applySession();
    bool resetSession();
    bool setEditPosition(std::optional<Types::Time> position);
    // The worker's answers; false / unchanged without a worker.
    bool canAcceptClips(const std::set<const Timeline::Clip*>& clips) const;
    void filterClips(std::set<const Timeline::Clip*>& clips) const;

    // --- the player's side -----------------------------------------------------------------------
    // Loads a timeline into the player (a stopped state at 0), or unloads it (no state).
    void setPlaybackTimeline(const Timeline::Object* timeline);
    bool setPlaybackCode(int code);
    bool setPlaybackPosition(Types::Time position);
    bool setPlaybackUnavailable(bool unavailable);

    // --- media files -----------------------------------------------------------------------------
    void setOpener(std::shared_ptr<Media::Opener> opener);
    Media::Opener* opener() const noexcept { return m_opener.get(); }
    // A new file record for `path` (cleaned), announced, and being opened.
    const Media::File* addFile(const Types::String& path);
    // Starts opening a file of the host; false without an opener or for a file already finished
    // or being opened.
    bool openFile(const Media::File* file);
    int pendingOpenCount() const noexcept { return int(m_opening.size()); }
    // Publishes Timeline::AllFilesProcessedNotification on `timeline` (from the event loop) once
    // every file of the batch has finished opening, opened or failed, or was removed. A timeline
    // removed first (a private copy given up while its files open) takes its batches with it:
    // nothing is announced for it.
    void watchFiles(const Timeline::Object* timeline, const std::vector<const Media::File*>& files);
    // Clips of `timeline` placed with a provisional length before their file opened: when the
    // file opens, each takes the file's real length (its video stream's, else its audio's; a
    // still keeps its length) in one edit of the timeline, and what follows it on its track
    // moves with its end. A clip whose timing was changed meanwhile, or that left the
    // timeline, is left alone, and so is a timeline removed meanwhile.
    void fitWhenOpened(const Timeline::Object* timeline, const std::vector<const Timeline::Clip*>& clips);

    // --- thumbnails ------------------------------------------------------------------------------
    void setThumbnailProvider(std::shared_ptr<Thumbnail::Provider> provider);
    Thumbnail::Provider* thumbnailProvider() const noexcept { return m_thumbnails.get(); }
    // The service's answer for a thumbnail record: its frame, or a null image when it failed.
    // The record's owner receives it as a change. False when the record is gone.
    bool answerThumbnail(const Thumbnail::Object* thumbnail, const QImage& image);

    // --- timeline requests -----------------------------------------------------------------------
    void setTimelineRequestHandler(std::shared_ptr<TimelineRequestHandler> handler);
    TimelineRequestHandler* timelineRequestHandler() const noexcept { return m_requests.get(); }

private:
    class ThumbnailWatch;
    class TimelineWatch;
    struct Batch
    {
        const Timeline::Object* timeline;
        std::set<const Media::File*> waiting;
    };

    void finishOpening(const Media::File* file, const Media::OpenResult& result);
    void fileSettled(const Media::File* file);
    void fitOpenedClips(const Media::File* file);
    void announceBatches();
    // Forgets what waits on a timeline that is being removed.
    void timelineRemoved(const Timeline::Object* timeline);
    Editor::Worker* worker() const;
    bool editPlaybackState(const char* operation, const std::function<void(Playback::State&)>& change);

    void notify(const Timeline::FileAddRequest& r) override;
    void notify(const Timeline::TimelineFileAddRequest& r) override;
    void notify(const Timeline::OverlayAddRequest& r) override;
    void notify(const Timeline::QuizAddRequest& r) override;
    void notify(const Timeline::SplitRequest& r) override;
    void notify(const Timeline::TransitionAddRequest& r) override;
    void notify(const Timeline::ClipAddRequest& r) override;
    void notify(const Timeline::FreezeFrameRequest& r) override;
    void notify(const Timeline::AnimationAddRequest& r) override;
    void notify(const Timeline::PanAndZoomAddRequest& r) override;
    void notify(const Playback::FrameSeekRequest& r) override;

    std::unordered_map<std::type_index, std::unique_ptr<Details::StoreBase>> m_stores;
    const Editor::Object* m_editor = nullptr;
    const Playback::Object* m_playback = nullptr;
    const Selection::Object<Timeline::Clip>* m_selection = nullptr;
    std::shared_ptr<Media::Opener> m_opener;
    std::shared_ptr<Thumbnail::Provider> m_thumbnails;
    std::unique_ptr<ThumbnailWatch> m_thumbnailWatch;
    std::unique_ptr<TimelineWatch> m_timelineWatch; // timelines batches or clips to fit wait on
    std::shared_ptr<TimelineRequestHandler> m_requests;
    std::unordered_map<const Media::File*, std::uint64_t> m_opening; // file -> opening ticket
    std::uint64_t m_nextTicket = 1;
    std::vector<Batch> m_batches;
    struct Provisional
    {
        const Timeline::Object* timeline;
        const Timeline::Clip* clip;
        Timeline::ClipTiming timing; // as placed
    };
    std::unordered_multimap<const Media::File*, Provisional> m_provisional;
    bool m_announceQueued = false;
};

} // namespace Model
