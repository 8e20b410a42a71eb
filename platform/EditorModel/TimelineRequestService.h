#pragma once

#include <EditorModel/Host.h>

namespace Model {

// Serves the timeline requests the host receives (installed with
// Host::setTimelineRequestHandler). Each request becomes one edit of the timeline it is
// addressed to, sent to that timeline's owner, so a request addressed to a shadow copy changes
// only the copy. New clips become records of the host. A request that names clips the timeline
// does not hold changes nothing and logs why.
//
//   FileAddRequest          media files through FileAdder::addMediaFiles
//   TimelineFileAddRequest  an intro: a nested timeline with one title clip whose two items
//                           hold the two strings, put at the start of the timeline
//   OverlayAddRequest       a title clip showing the preset, over its target clip (linked to it)
//                           or at the given position, else after the last clip of the track
//   QuizAddRequest          a quiz clip on the title track at the position pair
//   SplitRequest            each clip under the position is cut in two
//   TransitionAddRequest    the transition becomes an effect of the "transitions" collection on
//                           the clip, its duration (seconds) as the parameter "duration"
//   ClipAddRequest          the clip, at its timing
//   FreezeFrameRequest      the clip is cut at the position and a still of the frame there is
//                           inserted for the duration, moving later clips of the track right
//   AnimationAddRequest     the clip is given the animation
//   PanAndZoomAddRequest    the clip is given the pan-and-zoom animation
class TimelineRequestService : public TimelineRequestHandler
{
public:
    explicit TimelineRequestService(Host& host);
    ~TimelineRequestService() override;

    void fileAdd(const Timeline::FileAddRequest& r) override;
    void timelineFileAdd(const Timeline::TimelineFileAddRequest& r) override;
    void overlayAdd(const Timeline::OverlayAddRequest& r) override;
    void quizAdd(const Timeline::QuizAddRequest& r) override;
    void split(const Timeline::SplitRequest& r) override;
    void transitionAdd(const Timeline::TransitionAddRequest& r) override;
    void clipAdd(const Timeline::ClipAddRequest& r) override;
    void freezeFrame(const Timeline::FreezeFrameRequest& r) override;
    void animationAdd(const Timeline::AnimationAddRequest& r) override;
    void panAndZoomAdd(const Timeline::PanAndZoomAddRequest& r) override;

    // Name of the clips an intro request makes.
    static Types::String introName();

private:
    // Cuts `clip` at `position` (timeline time) inside `timeline`; the second half, or null
    // when the position is not strictly inside the clip.
    const Timeline::Clip* cut(Timeline::Object& timeline, const Timeline::Clip* clip, Types::Time position);
    // Moves the clips of `track` that start at or after `position` right by `by`.
    static void shiftTrack(Timeline::Object& timeline, const Timeline::Track* track, Types::Time position,
                           Types::Time by, const Timeline::Clip* except = nullptr);

    Host& m_host;
    View<Timeline::Object> m_timelines;
    View<Timeline::Clip> m_clips;
};

// Gives a host what it needs to serve imports, keeping anything already set: the
// signature-checking Media::SignatureOpener and a TimelineRequestService. A media engine
// replaces the opener with Host::setOpener.
void installDefaultServices(Host& host);

} // namespace Model
