#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Import/BaseFileOpenHandler.h>

#include <functional>

// The file-open pipeline bound to one timeline: it watches every media file being added to
// the timeline (Timeline::FileAddingNotification), and when the batch has finished opening
// and the user has answered the failure dialog, marks the timeline's clips of the failed files
// broken and, if the user chose to remove them, takes those clips off the timeline in one
// edit. A timeline removed while its files still open (a private copy given up) is forgotten:
// the handler then behaves as if it had none.
class EDITORUTIL_EXPORT TimelineFileOpenHandler : public BaseFileOpenHandler, public ImportListeners::FileAdding
{
public:
    explicit TimelineFileOpenHandler(const Timeline::Object* timeline);
    ~TimelineFileOpenHandler() override;

    // Stops listening to the former timeline and starts listening to `timeline` (may be null).
    // Files already watched stay watched.
    void setTimeline(const Timeline::Object* timeline);
    const Timeline::Object* timeline() const;

    // Watches `file` as part of the batch.
    void addFile(const Media::File* file);

private:
    bool allowToKeepFiles() const override;
    void clear() override;
    void postProcessing(bool remove) override;
    void fileAdding(const Timeline::FileAddingNotification& notification) override;

    // The clips of the timeline whose media file failed, in the timeline's order.
    std::vector<const Timeline::Clip*> affectedClips(const AnalyzedProduct& analysis) const;

    // Edits the timeline and tells when it is removed.
    class TimelineFollower : public Timeline::Details::ObjectViewBase
    {
    public:
        std::function<void()> onRemoved;

    private:
        void timelineRemoved(const Timeline::Object*) override { onRemoved(); }
    };

    const Timeline::Object* m_timeline = nullptr;
    TimelineFollower m_timelineEdits;
    Model::View<Timeline::Clip> m_clipEdits;
};
