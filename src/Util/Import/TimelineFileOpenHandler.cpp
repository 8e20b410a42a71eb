#include "TimelineFileOpenHandler.h"

#include <glog/logging.h>

#include <optional>

TimelineFileOpenHandler::TimelineFileOpenHandler(const Timeline::Object* timeline)
{
    m_timelineEdits.onRemoved = [this] { setTimeline(nullptr); };
    setTimeline(timeline);
}

TimelineFileOpenHandler::~TimelineFileOpenHandler()
{
    // Nothing may reach this handler once its own part is gone.
    unsubscribeEverything();
}

void TimelineFileOpenHandler::setTimeline(const Timeline::Object* timeline)
{
    if (m_timeline) {
        unsubscribe(m_timeline);
        if (m_timelineEdits.isObserved(m_timeline))
            m_timelineEdits.forget(m_timeline);
    }
    if (timeline) {
        subscribe(timeline);
        m_timelineEdits.observe(timeline);
    }
    m_timeline = timeline;
}

const Timeline::Object* TimelineFileOpenHandler::timeline() const { return m_timeline; }

void TimelineFileOpenHandler::addFile(const Media::File* file)
{
    if (!file) {
        LOG(ERROR) << "TimelineFileOpenHandler::addFile: null file";
        return;
    }
    watchFile(file);
}

void TimelineFileOpenHandler::fileAdding(const Timeline::FileAddingNotification& notification)
{
    addFile(notification.file);
}

std::vector<const Timeline::Clip*> TimelineFileOpenHandler::affectedClips(const AnalyzedProduct& analysis) const
{
    std::vector<const Timeline::Clip*> clips;
    if (!m_timeline || analysis.failedFiles.empty())
        return clips;
    for (const Timeline::Clip* clip : m_timeline->clips()) {
        if (clip->file() && analysis.failedFiles.count(clip->file()))
            clips.push_back(clip);
    }
    return clips;
}

bool TimelineFileOpenHandler::allowToKeepFiles() const
{
    if (!m_timeline)
        return false;
    const AnalyzedProduct analysis = makeFilesAnalyze();
    for (const Timeline::Clip* clip : m_timeline->clips()) {
        if (clip->file() && analysis.failedFiles.count(clip->file()))
            return true;
    }
    return false;
}

void TimelineFileOpenHandler::clear()
{
    const std::deque<const Media::File*> watched = files();
    for (const Media::File* file : watched)
        unsubscribe(file);
    BaseFileOpenHandler::clear();
}

void TimelineFileOpenHandler::postProcessing(bool remove)
{
    const std::vector<const Timeline::Clip*> clips = affectedClips(makeFilesAnalyze());
    if (clips.empty())
        return;

    // The broken marks are edits of the clips; the removal is one edit of the timeline.
    std::optional<Model::Edit<Timeline::Object>> timelineEdit;
    if (remove)
        timelineEdit.emplace(&m_timelineEdits, m_timeline);
    for (const Timeline::Clip* clip : clips) {
        if (!clip->isBroken()) {
            Model::Edit<Timeline::Clip> clipEdit(&m_clipEdits, clip);
            clipEdit->setBroken(true);
            if (!clipEdit.commit())
                LOG(ERROR) << "TimelineFileOpenHandler: a clip of a failed file could not be marked broken";
        }
        if (timelineEdit)
            (*timelineEdit)->removeClip(clip);
    }
    if (timelineEdit && !timelineEdit->commit())
        LOG(ERROR) << "TimelineFileOpenHandler: the clips of failed files could not be removed from the timeline";
}
