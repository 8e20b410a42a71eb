#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Import/BaseFileOpenHandler.h>

// The file-open pipeline bound to one timeline: it watches every media file being added to
// the timeline (Timeline::FileAddingNotification), and when the batch has finished opening
// and the user has answered the failure dialog, marks the timeline's clips of the failed files
// broken and, if the user chose to remove them, takes those clips off the timeline in one
// edit.
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

    const Timeline::Object* m_timeline = nullptr;
    Model::View<Timeline::Object> m_timelineEdits;
    Model::View<Timeline::Clip> m_clipEdits;
};
