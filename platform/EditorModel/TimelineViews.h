#pragma once

#include <EditorModel/ModelView.h>
#include <EditorModel/Timeline.h>

namespace Timeline::Details {

// The model's view of timelines. An owner of a timeline (a shadow copy) serves the edits others
// request of it through this view.
class ObjectViewBase : public Model::View<Object>
{
protected:
    virtual void timelineAdded(const Object*) {}
    virtual void timelineChanged(const Object* /*timeline*/, const Object* /*previous*/) {}
    virtual void timelineRemoved(const Object*) {}

private:
    void recordAdded(const Object* timeline) override { timelineAdded(timeline); }
    void recordChanged(const Object* timeline, const Object* previous) override { timelineChanged(timeline, previous); }
    void recordRemoved(const Object* timeline) override { timelineRemoved(timeline); }
};

// The model's view of clips.
class ClipViewBase : public Model::View<Clip>
{
protected:
    virtual void clipAdded(const Clip*) {}
    virtual void clipChanged(const Clip* /*clip*/, const Clip* /*previous*/) {}
    virtual void clipRemoved(const Clip*) {}

private:
    void recordAdded(const Clip* clip) override { clipAdded(clip); }
    void recordChanged(const Clip* clip, const Clip* previous) override { clipChanged(clip, previous); }
    void recordRemoved(const Clip* clip) override { clipRemoved(clip); }
};

// The model's view of tracks (records that never change once made).
class TrackViewBase : public Model::View<Track>
{
protected:
    virtual void trackAdded(const Track*) {}
    virtual void trackRemoved(const Track*) {}

private:
    void recordAdded(const Track* track) override { trackAdded(track); }
    void recordRemoved(const Track* track) override { trackRemoved(track); }
};

} // namespace Timeline::Details
