#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Import/Listeners.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Interfaces/PubSub.h>

#include <QObject>
#include <QStringList>

#include <memory>
#include <vector>

class DeferredCall;

// An addition to a timeline prepared on a private deep copy of it, the shadow timeline, so
// that opening files or placing an overlay, a quiz or an intro happens away from the timeline
// the user sees. Requests go to the shadow timeline only; the source is never touched.
//
// Typical use: create the change for the visible timeline, ask for additions, wait for
// shadowReady(), read shadowTimeline() and merge it back (with replaceNestedTimeline where the
// shadow is shown as a nested clip), then destroy the change.
class EDITORUTIL_EXPORT TimelineShadowChange
    : public QObject,
      public Timeline::Details::ObjectViewBase,
      public Timeline::Details::ClipViewBase,
      public Timeline::Details::TrackViewBase,
      public Selection::View<Timeline::Clip>,
      public PubSub::Publisher<Timeline::FileAddRequest, Timeline::TimelineFileAddRequest, Timeline::OverlayAddRequest,
                               Timeline::QuizAddRequest, Timeline::SplitRequest, Timeline::TransitionAddRequest,
                               Timeline::ClipAddRequest, Timeline::FreezeFrameRequest, Timeline::AnimationAddRequest,
                               Timeline::PanAndZoomAddRequest>,
      public ImportListeners::AllFilesProcessed,
      public ImportListeners::FileAdding
{
    Q_OBJECT

public:
    using RequestPublisher =
        PubSub::Publisher<Timeline::FileAddRequest, Timeline::TimelineFileAddRequest, Timeline::OverlayAddRequest,
                          Timeline::QuizAddRequest, Timeline::SplitRequest, Timeline::TransitionAddRequest,
                          Timeline::ClipAddRequest, Timeline::FreezeFrameRequest, Timeline::AnimationAddRequest,
                          Timeline::PanAndZoomAddRequest>;

    // Deep-copies `source` (which must not be null) into the shadow timeline. The copies of the
    // source's clips become records of the model, so clips merged back stay valid after the
    // change is gone; those that no other timeline holds by then are removed with it.
    TimelineShadowChange(const Timeline::Object* source, Timeline::Object::Scope scope, QObject* parent = nullptr);
    ~TimelineShadowChange() override;

    // Adds media files to the shadow (at `position` on `track`: see FileAdder::Context);
    // shadowReady waits until they, and the files of every earlier addFiles or addImport, have
    // opened or failed. With no file added (every path refused), readiness is checked in the
    // next turn as after a non-file addition.
    void addFiles(const QStringList& paths, FileAdder::Asrc origin, Types::Time position = -1,
                  const Timeline::Track* track = nullptr);
    // Asks for one file to be appended to the shadow (a Timeline::FileAddRequest); waited for
    // as the files of addFiles. When no subscriber added a file for it, that is logged and
    // readiness is checked in the next turn.
    void addImport(const Types::String& path);
    void addIntro(const Types::String& first, const Types::String& second);
    // Hands the preset to the subscriber that places it (over the first clip of the primary
    // track, on the title track); a preset nobody took is deleted on return.
    void addOverlay(std::unique_ptr<Overlay::Preset> preset);
    void addQuiz(std::unique_ptr<Quiz::Preset> preset);

    const Timeline::Object* shadowTimeline() const;
    const Timeline::Object* sourceTimeline() const;
    Timeline::Object::Scope scope() const;
    // Whether files added to the shadow (by any addFiles or addImport call) are still opening.
    bool filesPending() const;
    // Files added to the shadow so far (each file once) and how many of them finished opening,
    // opened or failed: what a progress bar of the import shows.
    int filesAdded() const;
    int filesFinished() const;

Q_SIGNALS:
    // The shadow holds every addition asked for so far, the files of all batches opened or
    // failed. Emitted from the event loop, never inside the call that asked for an addition:
    // once per turn in which an addition was asked for or a batch of files finished and no
    // files are pending any more (so possibly more than once). Destroying the change while
    // files still open is safe; it then emits nothing.
    void shadowReady();
    // A file added to the shadow finished opening, opened or failed: `finished` of `added`
    // files so far. Emitted as the model reports it, once per file; a file that had finished
    // before it was added counts as finished at once, without a signal of its own.
    void filesProgress(int finished, int added);

private:
    class FileWatch;

    void allFilesProcessed(const Timeline::AllFilesProcessedNotification& notification) override;
    void fileAdding(const Timeline::FileAddingNotification& notification) override;
    void readyCheck();

    const Timeline::Object* m_source;
    Timeline::Object::Scope m_scope;
    const Timeline::Object* m_shadow = nullptr;
    std::vector<const Timeline::Clip*> m_clonedClips;
    std::vector<const Timeline::Object*> m_clonedTimelines;
    int m_batchesPending = 0; // file additions whose files have not all finished opening
    int m_filesAnnounced = 0; // files the model announced on the shadow so far
    std::unique_ptr<DeferredCall> m_deferredReadyCheck;
    std::unique_ptr<FileWatch> m_fileWatch;
    int m_filesAdded = 0;
    int m_filesFinished = 0;
};

// Inside `container`, replaces each nested-timeline clip that shows `nested` by a clip showing a
// copy of `replacement`, as one edit of the container: the new clip keeps the old one's position
// and links (its master, its slaves, and a native audio clip, which is re-made for the new clip),
// takes the old clip's name with "* " put in front (unless it already starts with "*"), and lasts
// as long as the replacement (Timeline::Clip::DEFAULT_TITLE_CLIP_DURATION when that is empty).
// Other clips keep their positions. Returns the number of clips replaced; 0 (and a logged reason)
// for a null argument or when the model takes no new records.
EDITORUTIL_EXPORT int replaceNestedTimeline(const Timeline::Object* container, const Timeline::Object* nested,
                                            const Timeline::Object* replacement);
